#!/usr/bin/env bash
# archive_tools_test.sh QUILLMOOR_ZIP STUB   what other programs say of our archives: each kind is tested and unpacked by those
# that can read it, and must come out as it went in, times included. STUB is the self-extractor, which is one of them.
set -euo pipefail
zip=$(realpath "$1") stub=$(realpath "$2")
export LC_ALL=C.UTF-8 TZ=Asia/Kolkata             # far from UTC, and half an hour beside
work=$(mktemp -d -t quillmoor-archives.XXXXXX)
trap 'rm -rf "$work" || true' EXIT
cd "$work"
failed=0
fail() { echo "FAILED: $*" >&2; [ ! -s out ] || sed 's/^/    /' out >&2; failed=1; }
windows=no
case $zip in *.exe) windows=yes ;; esac
# Runs a program of ours; the launcher's hint about 32-bit programs is none of its words.
ours() {
  if [ $windows = no ]; then "$@"; return; fi
  local got=0
  wine "$@" 2>"$work/errors" || got=$?
  grep -vi wine "$work/errors" >&2 || true
  return $got
}
quietly() { "$@" >"$work/out" 2>&1 </dev/null || fail "status $?: $*"; }

mkdir -p tree/empty "tree/with  blanks/und Ümläute/日本"
seq 300000 >tree/large.txt
head -c 900000 /dev/urandom >tree/noise.bin
cat tree/large.txt tree/noise.bin tree/large.txt >tree/both
: >tree/nothing
printf x >tree/one
printf 'text\n' >"tree/with  blanks/und Ümläute/日本/ first.txt"
printf 'text\n' >"tree/$(printf '%0250d' 7)"
printf 'dots\n' >tree/.htaccess
chmod 750 tree/one
number=0
while IFS= read -r -d '' file; do                 # every file a time of its own, odd seconds among them
  touch -d "@$((1234567891 + 86400 * 31 * number++))" "$file"
done < <(find tree -type f -print0)

# The tree as a list: kind, name, size, time of files.
state() { (cd "$1" && find . -mindepth 1 \( -type d -printf 'd %p\n' \) -o -printf "f %p %s %T${2:-@}\n" | sed 's/\.0000000000$//' | sort); }
same() {                                          # FOLDER WHAT: contents and times
  diff -r tree "$1" >out 2>&1 || fail "$2: contents differ"
  diff <(state tree) <(state "$1") >out 2>&1 || fail "$2: names or times differ"
  rm -rf "$1"
}

quietly ours "$zip" tree plain.zip
quietly unzip -tq plain.zip
mkdir x && (cd x && quietly unzip -q ../plain.zip) && same x "unzip"
quietly 7z t plain.zip
quietly 7z x -ox plain.zip && same x "7z"
mkdir x && quietly bsdtar -xf plain.zip -C x && same x "bsdtar"
quietly python3 -m zipfile -t plain.zip
quietly python3 -m zipfile -e plain.zip x && { diff -r tree x >out || fail "python"; rm -rf x; }

quietly ours "$zip" --password "pass wörd" tree aes.zip
quietly 7z t "-ppass wörd" aes.zip
quietly 7z x "-ppass wörd" -ox aes.zip && same x "7z, encrypted"
mkdir x && quietly bsdtar --passphrase "pass wörd" -xf aes.zip -C x && same x "bsdtar, encrypted"
7z t -pwrong aes.zip >out 2>&1 </dev/null && fail "7z takes a wrong password"

for size in 65536 100001 358400; do
  for password in "" "secret"; do
    options=(--segments "$size")
    [ -z "$password" ] || options+=(--password "$password")
    mkdir set
    quietly ours "$zip" "${options[@]}" tree set/a.zip
    [ "$(find set -type f -size +"${size}c" | wc -l)" = 0 ] || fail "a segment is longer than $size"
    [ "$(find set -type f | wc -l)" -ge 3 ] || fail "not split at $size"
    quietly 7z t "-p$password" set/a.zip
    quietly 7z x "-p$password" -ox set/a.zip && same x "7z, segments of $size"
    rm -r set
  done
done

# Self-extracting: by itself, and for the others an archive like any.
quietly ours "$zip" --stub "$stub" tree sfx.exe
quietly ours ./sfx.exe x && same x "itself"
quietly ours ./sfx.exe && same sfx "itself, into its own folder"
quietly unzip -tq sfx.exe
quietly 7z t sfx.exe
quietly python3 -m zipfile -t sfx.exe
quietly bsdtar -tf sfx.exe

mkdir set
quietly ours "$zip" --stub "$stub" --segments 358400 --password "pass wörd" tree set/a.exe
quietly 7z t "-ppass wörd" set/a.zip
status() { local got=0; "$@" >out 2>&1 || got=$?; echo "$got"; }
[ "$(status ours set/a.exe x <<<"pass wörd")" = 0 ] || fail "the set does not unpack itself"
same x "itself, in segments and encrypted"
[ "$(status ours set/a.exe --test <<<"pass wörd")" = 0 ] && [ ! -e set/a ] || fail "a sound set does not pass, or is unpacked"
[ "$(status ours set/a.exe --test <<<"pass word")" = 4 ] || fail "a wrong password is not reported"
[ "$(wc -l <out)" = 1 ] || fail "not one line for a wrong password"
[ "$(status ours set/a.exe --test </dev/null)" = 5 ] || fail "a missing password is not reported"
[ "$(status ours set/a.exe --what)" = 2 ] || fail "a wrong option is not reported"
cp set/a.z02 aside
printf 'eight in' | dd of=set/a.z02 bs=1 seek=1000 conv=notrunc status=none
[ "$(status ours set/a.exe --test <<<"pass wörd")" = 3 ] && grep -q damaged out || fail "damage is not reported"
rm set/a.z02
[ "$(status ours set/a.exe --test <<<"pass wörd")" = 3 ] && grep -q 'a.z02.*missing' out || fail "a missing part is not reported"
[ "$(wc -l <out)" = 1 ] || fail "not one line for a missing part"
[ "$(stat -c %s "$stub")" -lt 1572864 ] || fail "the self-extractor is larger than 1.5 MiB"

# Nothing in it.
mkdir hollow
quietly ours "$zip" hollow hollow.zip
quietly 7z t hollow.zip
quietly python3 -m zipfile -t hollow.zip

[ "$failed" = 0 ] && echo ok
exit "$failed"
