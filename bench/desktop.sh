#!/usr/bin/env bash
# desktop.sh SITE...   the program with its windows: how soon it is seen, what it takes while it idles in the notification
# area, how long a run of each site takes in the window and on a terminal, and how long a click waits meanwhile.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
cd "$here/.."
if [ -z "${DESKTOP_BENCH:-}" ]; then
  sites=()
  for site in "$@"; do sites+=("$(realpath "$site")"); done
  scripts/build.sh linux quillmoor quillmoor-run quillmoor-config DesktopBench >/dev/null
  DESKTOP_BENCH=1 exec tests/gui/with_screen.sh bench/desktop.sh "${sites[@]}"
fi
work=$(mktemp -d -p "$([ -w /dev/shm ] && echo /dev/shm || echo /tmp)" quillmoor-bench.XXXXXX)
trap 'tests/servers/serve.sh stop "$work/server"; rm -rf "$work"' EXIT
chmod 755 "$work"
mkdir "$work/program" "$work/to"
cp build/linux/src/shell/quillmoor build/linux/src/console/quillmoor-{run,config} build/linux/bench/DesktopBench assets/Server.avi \
  assets/Help.rtf "$work/program/"
config=$work/program/quillmoor-config
for setting in AutoDial AutoHangUp CreateZip AutoStartUp; do "$config" setting set "$setting" 0; done
now() { date +%s.%N; }
minus() { awk "BEGIN { printf \"%.3f\", $1 - $2 }"; }

for round in 1 2 3; do
  begin=$(now)
  "$work/program/quillmoor" 2>/dev/null &
  pid=$!
  until xwininfo -root -tree | grep -qE '"Quillmoor": .* [0-9]{3,}x[0-9]{3,}'; do :; done
  echo "start $round: a window after $(minus "$(now)" "$begin") s"
  [ "$round" = 3 ] || { kill "$pid"; wait "$pid" 2>/dev/null || true; }
done
sleep 5                                           # into the notification area, and to rest
ran() { awk '{ print $1 }' "/proc/$pid/schedstat"; }                   # nanoseconds
before=$(ran)
sleep 30
idle=$(awk "BEGIN { printf \"%.3f\", ($(ran) - $before) / 1e9 / 30 * 100 }")
echo "idle in the notification area: $idle % of a core, $(awk '/VmRSS/ { printf "%.1f", $2 / 1024 }' "/proc/$pid/status") MiB"
kill "$pid"
wait "$pid" 2>/dev/null || true

for site in "$@"; do
  eval "$(tests/servers/serve.sh start pure-ftpd "$site" "$work/server")"
  rm -f "$work/program/Profiles.ini"
  "$config" profile set site Host="$FTP_HOST" Port="$FTP_PORT" UserID="$FTP_USER" Password=- SaveTo="$work/to/" Folder=/ \
    <<<"$FTP_PASSWORD"
  for round in 1 2 3 4 5; do
    rm -rf "$work/to/site"
    begin=$(now)
    "$work/program/quillmoor-run" --assume-network >/dev/null
    echo "$(basename "$site"), terminal: $(minus "$(now)" "$begin") s"
    rm -rf "$work/to/site"
    echo "$(basename "$site"), window: $("$work/program/DesktopBench" "$work/program/Profiles.ini" 2>/dev/null)"
  done
  diff -r "$site" "$work/to/site" && echo "$(basename "$site"): identical"
  tests/servers/serve.sh stop "$work/server"
done
