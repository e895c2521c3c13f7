#!/usr/bin/env bash
# Run by demo.sh --desktop: builds Quillmoor, serves a sample site on this machine, starts the program, and presses
# "Start Now". Ends when the user chooses "Exit" in the program's menu; on a virtual display, by itself.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
if [ -z "${DISPLAY:-}" ]; then
  echo "There is no X display (DISPLAY is not set): the demo runs on a virtual one."
  scripts/setup.sh
  QUILLMOOR_DEMO_UNSEEN=1 exec tests/gui/with_screen.sh "scripts/$(basename "$0")" "$@"
fi
target=${1:-}
if [ -z "$target" ]; then target=$(mktemp -d -t quillmoor-demo.XXXXXX); else mkdir -p "$target"; fi
target=$(realpath "$target")
work=$(mktemp -d -t quillmoor-demo-work.XXXXXX)
pid=
finish() {
  if [ -n "$pid" ]; then kill "$pid" 2>/dev/null || true; fi
  tests/servers/serve.sh stop "$work/server"
  rm -rf "$work" || true
}
trap finish EXIT
chmod 755 "$work"
step() { printf '\n== %s\n' "$*"; }
until_true() {                                    # SECONDS COMMAND...: fails when the command does not succeed in that time
  local end=$((SECONDS + $1))
  shift
  until "$@" >/dev/null 2>&1; do
    [ "$SECONDS" -lt "$end" ] || return 1
    read -rt 0.05 <> <(:) || true
  done
}

step "Building Quillmoor"
scripts/build.sh linux quillmoor quillmoor-run quillmoor-config
cmake --install build/linux --prefix "$work" >/dev/null
program=$work/quillmoor

step "Serving a sample site on a port of this machine"
scripts/sample_site.sh "$work/site"
mkdir "$work/site/www/pages"
for number in {1..1500}; do echo "<html>Page $number</html>" >"$work/site/www/pages/page$number.html"; done
touch -d '2019-06-05 12:00' "$work"/site/www/pages/*
eval "$(tests/servers/serve.sh start pyftpdlib "$work/site" "$work/server")"
echo "ftp://$FTP_HOST:$FTP_PORT/ with $(find "$work/site" -type f | wc -l) files"

step "Making its profile"
export XDG_CONFIG_HOME=$work/config
# This machine's own network needs no dial-up; and a demo should not start with the desktop session.
for setting in AutoDial AutoHangUp CreateZip AutoStartUp; do "$program/quillmoor-config" setting set "$setting" 0; done
"$program/quillmoor-config" profile set "Sample site" Host="$FTP_HOST" Port="$FTP_PORT" UserID="$FTP_USER" Password=- \
  SaveTo="$target/" Folder=/www Folder=/cgi-bin <<<"$FTP_PASSWORD"

step "Starting the program"
# Through X on a Wayland desktop too: only there can a script press keys.
GDK_BACKEND=x11 "$program/quillmoor" 2>"$work/quillmoor.log" &
pid=$!
seen() {                                          # -gt: the id of its window; -le: of its icon, which is small
  local id WIDTH=0
  for id in $(xdotool search --onlyvisible --pid "$pid" --name '^Quillmoor$'); do
    eval "$(xdotool getwindowgeometry --shell "$id" | grep '^WIDTH=')"
    if [ "$WIDTH" "$1" 300 ]; then echo "$id"; return; fi
  done
}
shown() { [ -n "$(seen -gt)" ]; }
started() { shown || [ -n "$(seen -le)" ]; }
until_true 20 started || { cat "$work/quillmoor.log" >&2; echo "demo: the window did not appear" >&2; exit 1; }
# Switches to the pane "Backup" and presses "Start Now" by its shortcut. Some time after its start the window hides by
# itself, on a busy machine before it was used: then it is brought back, and stays.
brought_back='' in_front=''
bring_back() {
  local icon
  icon=$(seen -le)
  if [ -n "$icon" ]; then
    timeout 5 xdotool mousemove --window "$icon" 4 4 click 1 mousemove restore
  else                                            # minimised
    timeout 5 xdotool search --pid "$pid" --name '^Quillmoor$' windowactivate %@
  fi
  until_true 5 shown && brought_back=yes
}
keys() {
  local window
  window=$(seen -gt)
  [ -n "$window" ] && timeout 5 xdotool windowfocus --sync "$window" key --delay 100 "$@"
}
begun() { [ -e "$target/Sample site" ]; }
press() {
  until_true 2 shown || bring_back || return
  [ -n "$in_front" ] || keys ctrl+Tab || return
  in_front=yes                                    # a second time would switch to the next pane
  keys alt+s && until_true 5 begun
}
until_true 60 press || echo 'Click its icon in the notification area or the taskbar, then "Backup" and "Start Now".'
complete() {
  [ "$(find "$work/site" -type f | wc -l)" = "$(find "$target/Sample site" -type f -name '[!.]*' -o -name .htaccess | wc -l)" ]
}
until_true 600 complete || { echo "demo: the backup did not finish" >&2; exit 1; }
step "The backup is complete"
rm "$work/site/www/start.html"                    # a link is not part of a backup
same() { diff -r "$work/site" "$target/Sample site"; }
until_true 10 same || { same || true; exit 1; }
echo "It is in $target and is identical to the site."
echo 'The program is in the notification area (without one, in the taskbar). A click on its icon brings its window back.'
if [ -z "${QUILLMOOR_DEMO_UNSEEN:-}" ]; then
  echo 'A right click opens its menu; "Exit" ends the demo.'
  wait "$pid" || true
elif [ -z "$brought_back" ]; then
  hidden() { ! shown; }
  until_true 10 hidden || { echo "demo: the window did not hide in the notification area" >&2; exit 1; }
fi
