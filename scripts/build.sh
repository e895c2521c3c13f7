#!/usr/bin/env bash
# build.sh PRESET [TARGET...]   installs what is missing, configures a preset and builds it, or only the targets given.
## QUILLMOOR_CMAKE_OPTIONS: more options for CMake.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
preset=${1:?usage: build.sh PRESET [TARGET...]}
shift
read -ra options <<<"${QUILLMOOR_CMAKE_OPTIONS:-}"
if [ "$preset" = windows ]; then
  scripts/setup.sh g++-mingw-w64-x86-64-posix binutils-mingw-w64-x86-64 libz-mingw-w64-dev googletest \
    dpkg-dev m4
  libraries=$(packaging/windows/deps/build.sh)
  # Paths cached by an earlier configuration may be gone from the library cache by now.
  options+=(-U 'NETTLE_*' -U 'OPENSSL_*' -U ASIO_INCLUDE_DIR -U '*_DIR' "-DQUILLMOOR_WINDOWS_LIBRARIES=$libraries" -DCMAKE_CROSSCOMPILING_EMULATOR=wine)
else
  scripts/setup.sh
fi
command -v ccache >/dev/null && options+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
log=$(mktemp)
trap 'rm -f "$log"' EXIT
cmake --preset "$preset" "${options[@]}" >"$log" 2>&1 || { cat "$log" >&2; exit 1; }
targets=()
for target in "$@"; do targets+=(--target "$target"); done
cmake --build --preset "$preset" "${targets[@]}"
