#!/usr/bin/env bash
# run.sh TOOLBOX SITE [RTT_MS]          quillmoor-run beside other mirror programs: first run of a site
# run.sh TOOLBOX --again SITE [RTT_MS]  the second run, with everything up to date
#
# TOOLBOX is the folder of the comparison's own scripts (peers.sh, incremental.sh, ...), which give each program an
# empty folder $OUT and a server. Build the preset linux first.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
toolbox=$(realpath "${1:?usage: run.sh TOOLBOX [--again] SITE [RTT_MS]}")
shift
script=peers.sh
if [ "$1" = --again ]; then script=incremental.sh; shift; fi
export QUILLMOOR_PROGRAMS=$here/../build/linux/src/console
mirror="bash '$here/mirror.sh'"
CANDIDATE="MODE=1 $mirror" CANDIDATE_INCREMENTAL="MODE=2 $mirror" "$toolbox/$script" "$@"
