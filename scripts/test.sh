#!/usr/bin/env bash
# Sets up what is missing, builds, and passes the tests: with the sanitizers first, then as released.
#   test.sh [linux | linux-asan]   only one of the two
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
presets=("$@")
[ $# != 0 ] || presets=(linux-asan linux)
for preset in "${presets[@]}"; do
  echo "== $preset"
  scripts/build.sh "$preset"
  ctest --preset "$preset" --parallel "$(nproc)"
done
