#!/usr/bin/env bash
# zip.sh TOOLBOX FOLDER   our archives beside those of other zip programs: time, size, memory.
# TOOLBOX is the folder of the comparison's own scripts (zip_peers.sh); its environment (PEERS, RUNS, ...) works here too.
# Build the preset linux first.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
[ $# = 2 ] || { echo "usage: zip.sh TOOLBOX FOLDER" >&2; exit 2; }
export QUILLMOOR_ZIP=$here/../build/linux/bench/quillmoor-zip
if [ ! -x "$QUILLMOOR_ZIP" ]; then echo "zip.sh: scripts/build.sh linux comes first" >&2; exit 2; fi
CANDIDATE_ZIP='"$QUILLMOOR_ZIP" "$SRC" "$OUT"' "$(realpath "$1")/zip_peers.sh" "$2"
