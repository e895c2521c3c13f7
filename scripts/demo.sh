#!/usr/bin/env bash
# A complete backup from scratch: builds Quillmoor, serves a sample site with a real FTP server on this machine, backs
# it up, backs it up again to show that nothing is fetched twice, and packs it into an archive.
## The backup is kept (in DIR of demo.sh DIR, else in a temporary folder); everything else is cleaned up.
##   demo.sh --desktop    the same in the program's window; without a display, on a virtual one
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
if [ "${1:-}" = --desktop ]; then
  shift
  exec scripts/demo_desktop.sh "$@"
fi
target=${1:-}
if [ -z "$target" ]; then target=$(mktemp -d -t quillmoor-demo.XXXXXX); else mkdir -p "$target"; fi
target=$(realpath "$target")
work=$(mktemp -d -t quillmoor-demo-work.XXXXXX)
trap 'tests/servers/serve.sh stop "$work/server"; rm -rf "$work" || true' EXIT
chmod 755 "$work"
step() { printf '\n\033[1m== %s\033[0m\n' "$*"; }
[ -t 1 ] || step() { printf '\n== %s\n' "$*"; }

step "Building Quillmoor"
scripts/build.sh linux quillmoor quillmoor-run quillmoor-config MsSFX
cmake --install build/linux --prefix "$work" >/dev/null
program=$work/quillmoor

step "Serving a sample site on a port of this machine"
scripts/sample_site.sh "$work/site"
eval "$(tests/servers/serve.sh start pyftpdlib "$work/site" "$work/server")"
echo "ftp://$FTP_HOST:$FTP_PORT/ with $(find "$work/site" -type f | wc -l) files"

step "Making its profile"
export XDG_CONFIG_HOME=$work/config
# This machine's own network needs no dial-up.
for setting in AutoDial AutoHangUp CreateZip; do "$program/quillmoor-config" setting set "$setting" 0; done
"$program/quillmoor-config" profile set "Sample site" Host="$FTP_HOST" Port="$FTP_PORT" UserID="$FTP_USER" Password=- \
  SaveTo="$target/" Folder=/www Folder=/cgi-bin <<<"$FTP_PASSWORD"
"$program/quillmoor-config" profile list

step "Backing it up"
"$program/quillmoor-run" --assume-network

step "What it has fetched"
(cd "$target" && find . -printf '%M %8s  %TF %TH:%TM  %p\n' | sort -k5)
mv "$work/site/www/start.html" "$work/"                       # a link is not part of a backup
diff -r "$work/site" "$target/Sample site" && echo "The backup is identical to the site."

step "Backing it up again, only what is new"
"$program/quillmoor-config" setting set BackupMode 2
"$program/quillmoor-run" --assume-network >"$work/log"
grep -m 3 -A 2 --no-group-separator '^Retriving' "$work/log"
echo "..."
tail -n 3 "$work/log"
fetched=$(grep -c '^Retriving' "$work/log") skipped=$(grep -c '^Skipped: File upto date' "$work/log")
echo "$fetched files looked at, $skipped skipped as up to date."
[ "$fetched" = "$skipped" ] || { echo "demo: the second run fetched files again" >&2; exit 1; }

step "Packing it: an archive in segments, with a password, and a copy of it"
mkdir -p "$target/copies"
for pair in CreateZip=1 SplitZip=1 ZipSpanSize=350 ZipCopies="$target/copies"; do
  "$program/quillmoor-config" setting set "${pair%%=*}" "${pair#*=}"
done
"$program/quillmoor-config" setting set ZipPassword - <<<"open sesame"
"$program/quillmoor-run" --assume-network >"$work/log"
grep -A 3 '^Creating Zip File' "$work/log"
(cd "$target" && find . -maxdepth 2 -name 'Sample site.z*' -printf '%8s  %p\n' | sort -k2)
7z x -p"open sesame" -o"$work/unpacked" "$target/copies/Sample site.zip" >"$work/log" || { cat "$work/log" >&2; exit 1; }
diff -r "$work/site" "$work/unpacked" && echo "The copy, unpacked by another program, is identical to the site."

step "Done"
echo "The backup is in $target"
