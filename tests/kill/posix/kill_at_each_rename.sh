#!/usr/bin/env bash
# kill_at_each_rename.sh PROGRAMS KILL_AT   kills quillmoor-run at the first call that changes a name, at the second,
# and so on until a run gets through. Each time it replaces an older backup, its archive in segments and a copy of that.
# PROGRAMS is the folder of quillmoor-run, KILL_AT the library that kills.
set -euo pipefail
programs=$(realpath "$1") kill_at=$(realpath "$2")
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
. "$here/../../support/programs.sh"
work=$(mktemp -d -t quillmoor-kill.XXXXXX)
trap '"$here/../../servers/serve.sh" stop "$work/server"; rm -rf "$work" || true' EXIT
chmod 755 "$work"
export ASAN_OPTIONS=verify_asan_link_order=0
fail() { echo "FAILED at call ${n:-0}: $*" >&2; tail -n 20 "$work/log" >&2; find "$work/backup" "$work/copies" >&2; exit 1; }

# Two states of a site. The second one's archive has more segments.
new_site() {                                      # WORD KILOBYTES
  mkdir -p "$work/site/sub"
  printf '%s\n' "$1" "$1" >"$work/site/index.html"
  head -c "$(($2 * 1024))" /dev/urandom >"$work/site/noise.bin"
  head -c 3000 /dev/urandom >"$work/site/sub/small.bin"
}
new_site old 800
settings=$("$here/../../servers/serve.sh" start pyftpdlib "$work/site" "$work/server") || exit $?
eval "$settings"
lay_out "$programs" "$work"
mkdir "$work/backup" "$work/copies"
for pair in AutoDial=0 AutoHangUp=0 ConnectionDelay=0 CreateZip=1 SplitZip=1 ZipSpanSize=350 "ZipCopies=$work/copies"; do
  "$config" setting set "${pair%%=*}" "${pair#*=}"
done
"$config" profile set site Host="$FTP_HOST" Port="$FTP_PORT" UserID="$FTP_USER" Password=- SaveTo="$work/backup/" \
  Folder=/ <<<"$FTP_PASSWORD"
"$run" --assume-network >"$work/log" || fail "the first run"
mkdir "$work/former"
cp -a "$work/backup" "$work/copies" "$work/former/"
cp -a "$work/site" "$work/old"
new_site new 1500

one_of_both() {                                   # each file of the tree is that of one of the two states
  local file
  while read -r file; do
    case $file in */.quillmoor-*) continue ;; esac
    cmp -s "$work/backup/site/$file" "$work/old/$file" || cmp -s "$work/backup/site/$file" "$work/site/$file" ||
      fail "neither old nor new: $file"
  done < <(cd "$work/backup/site" && find . -type f)
}
whole_set() {                                     # FOLDER: the archive is the former one, or it holds the new state
  if diff -r -x site "$work/former/$1" "$work/$1" >/dev/null; then return; fi
  7z x -o"$work/unpacked" "$work/$1/site.zip" >"$work/said" 2>&1 </dev/null || { cat "$work/said" >&2; fail "no whole set in $1"; }
  diff -r "$work/site" "$work/unpacked" || fail "the archive in $1 is neither old nor new"
  rm -r "$work/unpacked"
}
start_of_a_run() {                                # [N]: of a profile that is switched off; killed at call N
  "$config" profile set site Status=0
  if [ $# = 0 ]; then
    "$run" --assume-network >"$work/log" 2>&1 || fail "a former set was not put back"
  else
    { QUILLMOOR_KILL_AT=$1 LD_PRELOAD=$kill_at "$run" --assume-network >"$work/log" 2>&1; } 2>/dev/null || true
  fi
  "$config" profile set site Status=1
}
nothing_unfinished() {
  [ -z "$(find "$@" -name '.quillmoor-*' -print -quit)" ] || fail "something unfinished was left"
}

for ((n = 1;; n++)); do
  rm -r "$work/backup" "$work/copies"
  cp -a "$work/former/backup" "$work/former/copies" "$work/"
  status=0
  { QUILLMOOR_KILL_AT=$n LD_PRELOAD=$kill_at "$run" --assume-network >"$work/log" 2>&1; } 2>/dev/null || status=$?
  [ $status != 0 ] || break
  [ $status = 137 ] || fail "status $status"
  one_of_both
  # Putting right is itself killed somewhere, and begun again.
  start_of_a_run $((n % 12 + 1))
  start_of_a_run
  nothing_unfinished "$work/backup" "$work/copies" -maxdepth 1
  whole_set backup
  whole_set copies
  "$run" --assume-network >"$work/log" 2>&1 || fail "the run after it"
  diff -r "$work/site" "$work/backup/site" || fail "the copy is not the site"
  nothing_unfinished "$work"
done
((n > 40)) || fail "a run makes only $((n - 1)) calls that change names"
diff -r "$work/site" "$work/backup/site" || fail "the copy is not the site"
nothing_unfinished "$work"

# Two programs with settings of their own, at the same time, into one folder: whoever writes, no contents are swapped.
mkdir "$work/second"
cp -a "$work/program" "$work/config" "$work/second/"
for round in 1 2 3; do
  "$run" --assume-network >"$work/log" 2>&1 &
  first=$!
  XDG_CONFIG_HOME=$work/second/config "$work/second/program/quillmoor-run" --assume-network >"$work/log2" 2>&1 || true
  wait "$first" || true
  grep -q "Good Bye." "$work/log" && grep -q "Good Bye." "$work/log2" || fail "a run was not made, round $round"
  diff -r "$work/site" "$work/backup/site" || fail "two runs at once have swapped contents, round $round"
  whole_set backup
  nothing_unfinished "$work/backup" "$work/copies"
done
echo "ok: killed at each of $((n - 1)) calls"
