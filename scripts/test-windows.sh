#!/usr/bin/env bash
# Installs what is missing, cross-builds for Windows, and runs the tests under Wine, in their own prefix and on their
# own virtual display.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/setup.sh wine wine64 xvfb xauth
echo "== windows"
scripts/build.sh windows

work=$(mktemp -d -t quillmoor-wine.XXXXXX)
export WINEPREFIX=$work/prefix WINEDEBUG=-all WINEDLLOVERRIDES='mscoree=;mshtml=' LC_ALL=C.UTF-8 TZ=UTC
trap 'wineserver -k 2>/dev/null || true; kill $(jobs -p) 2>/dev/null || true; rm -rf "$work" || true' EXIT
Xvfb -displayfd 3 -screen 0 1280x1024x24 3>"$work/display" >/dev/null 2>&1 &
screen=$!
until [ -s "$work/display" ]; do kill -0 "$screen"; read -rt 0.05 <> <(:) || true; done
DISPLAY=:$(cat "$work/display")
export DISPLAY
openbox --sm-disable >/dev/null 2>&1 &            # for the window tests
wineboot --init >/dev/null 2>&1
# A program that keeps running. Without one, each test would restart Wine's own processes, and whoever reads a test's
# output would wait until those end, too.
mkfifo "$work/keyboard"
wine cmd <"$work/keyboard" >/dev/null 2>&1 &
exec 4>"$work/keyboard"
# Wine itself sometimes fails to start or end when it runs often. A test that fails twice has failed.
ctest --preset windows --parallel "$(nproc)" --repeat until-pass:2
