#!/usr/bin/env bash
# with_screen.sh COMMAND...   runs a command on a screen of its own, with a window manager and a notification area, and
# ends with its status. Exit status 77 when that cannot be had here.
set -euo pipefail
for program in Xvfb openbox trayer; do
  command -v $program >/dev/null || { echo "with_screen.sh: $program is missing" >&2; exit 77; }
done
work=$(mktemp -d -t quillmoor-screen.XXXXXX)
pids=()
trap 'for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null || true; wait "$pid" 2>/dev/null || true; done; rm -rf "$work" || true' EXIT
mkdir -m 700 "$work/home" "$work/run"
export HOME=$work/home XDG_CONFIG_HOME=$work/home/.config XDG_RUNTIME_DIR=$work/run NO_AT_BRIDGE=1 GDK_BACKEND=x11
# Lists scroll at once. How long an animation takes is up to the screen, and one without a refresh may never end it.
mkdir -p "$work/etc/gtk-3.0"
printf '[Settings]\ngtk-enable-animations=0\n' >"$work/etc/gtk-3.0/settings.ini"
export XDG_CONFIG_DIRS=$work/etc
unset DBUS_SESSION_BUS_ADDRESS WAYLAND_DISPLAY XAUTHORITY
Xvfb -displayfd 3 -screen 0 1280x900x24 -nolisten tcp 3>"$work/display" 2>/dev/null &
pids+=($!)
wait_for() {                                      # TEXT COMMAND...: until the command succeeds, for 10 s
  local what=$1
  shift
  for _ in {1..500}; do
    "$@" >/dev/null 2>&1 && return
    read -rt 0.02 <> <(:) || true
  done
  echo "with_screen.sh: no $what" >&2
  exit 1
}
wait_for "display" test -s "$work/display"
DISPLAY=:$(cat "$work/display")
export DISPLAY
openbox --sm-disable >/dev/null 2>&1 &
pids=($! "${pids[@]}")
wait_for "window manager" sh -c 'xprop -root _NET_SUPPORTING_WM_CHECK | grep -q "window id"'
trayer --edge bottom --align right --widthtype request --height 24 >/dev/null 2>&1 &
pids=($! "${pids[@]}")
wait_for "notification area" sh -c 'xwininfo -root -tree | grep -q trayer'
"$@"
