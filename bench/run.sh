#!/usr/bin/env bash
# run.sh TOOLBOX SITE [RTT_MS]          quillmoor-run beside other mirror programs: first run of a site
# run.sh TOOLBOX --again SITE [RTT_MS]  the second run, with everything up to date
#
# TOOLBOX is the folder of the comparison's own scripts (peers.sh, incremental.sh, ...), which give each program an
# empty folder $OUT and a server; it may be left out when BENCH_DIR names it. Their environment (PEERS, RUNS, ...) works
# here too. Build the preset linux first.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
usage="usage: run.sh TOOLBOX [--again] SITE [RTT_MS]"
if [ -z "${BENCH_DIR:-}" ]; then BENCH_DIR=${1:?$usage}; shift; fi
toolbox=$(realpath "$BENCH_DIR")
script=peers.sh
if [ "${1:?$usage}" = --again ]; then script=incremental.sh; shift; fi
export QUILLMOOR_PROGRAMS=$here/../build/linux/src/console
if [ ! -x "$QUILLMOOR_PROGRAMS/quillmoor-run" ]; then echo "run.sh: scripts/build.sh linux comes first" >&2; exit 2; fi
mirror="bash '$here/mirror.sh'"
CANDIDATE="MODE=1 $mirror" CANDIDATE_INCREMENTAL="MODE=2 $mirror" "$toolbox/$script" "$@"
