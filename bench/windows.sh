#!/usr/bin/env bash
# windows.sh SITE...   the Windows build under Wine beside the native one: whole backups of each site from one server, in
# alternation. RUNS: rounds (3). Build the presets linux and windows first; wants a screen ($DISPLAY).
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
work=$(mktemp -d -p "${TMPDIR:-/dev/shm}" quillmoor-bench.XXXXXX)
export WINEPREFIX=$work/prefix WINEDEBUG=-all LC_ALL=C.UTF-8 TZ=UTC
trap '"$here/../tests/servers/serve.sh" stop "$work/server"; wineserver -k || true; rm -rf "$work"' EXIT
chmod 755 "$work"
. "$here/../tests/support/programs.sh"
wineboot --init >/dev/null 2>&1
mkfifo "$work/keyboard"
wine cmd <"$work/keyboard" >/dev/null 2>&1 &      # Wine's own start is none of the backup's time
exec 4>"$work/keyboard"

prepare() {                                       # BUILD: its programs, and a profile that saves into $work/BUILD
  lay_out "$here/../build/$1/src/console" "$work/programs-$1"
  for setting in AutoDial AutoHangUp CreateZip; do "$config" setting set "$setting" 0; done
  "$config" setting set AsciiExts ""
  "$config" profile set "$1" Host="$FTP_HOST" Port="$FTP_PORT" UserID="$FTP_USER" Password=- SaveTo="$(native "$work/")" \
    Folder="$FTP_ROOT" <<<"$FTP_PASSWORD"
}
seconds() { local TIMEFORMAT=%R; { time "$@" >/dev/null; } 2>&1; }
median() { sort -n | awk '{ all[NR] = $1 } END { print all[int((NR + 1) / 2)] }'; }

for site in "$@"; do
  settings=$("$here/../tests/servers/serve.sh" start pure-ftpd "$site" "$work/server")
  eval "$settings"
  declare -A program=()
  for build in linux windows; do prepare $build; program[$build]=$run; : >"$work/$build.times"; done
  for ((round = 0; round < ${RUNS:-3}; round++)); do
    for build in linux windows; do
      rm -rf "${work:?}/$build"
      seconds "${program[$build]}" --assume-network >>"$work/$build.times"
      diff -r "$site" "$work/$build" >/dev/null || { echo "windows.sh: $build differs from $site" >&2; exit 1; }
    done
  done
  linux=$(median <"$work/linux.times") windows=$(median <"$work/windows.times")
  awk -v site="$(basename "$site")" -v bytes="$(du -sb "$site" | cut -f1)" -v l="$linux" -v w="$windows" 'BEGIN {
    printf "| %-8s | native %6.2f s, %7.1f MB/s | under Wine %6.2f s, %7.1f MB/s | %.2f x as long |\n", site, l, bytes / l / 1e6, w, bytes / w / 1e6, w / l }'
  "$here/../tests/servers/serve.sh" stop "$work/server"
done
