#!/usr/bin/env bash
# Installs what is missing, builds, and runs the tests: first with the sanitizers, then as released.
##   test.sh [linux | linux-asan]   runs only one of the two
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
presets=("$@")
[ $# != 0 ] || presets=(linux-asan linux)
for preset in "${presets[@]}"; do
  echo "== $preset"
  scripts/build.sh "$preset"
  ctest --preset "$preset" --parallel "$(nproc)"
done
