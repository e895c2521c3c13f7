#!/usr/bin/env bash
# zip_large.sh [FOLDER]   archives at sizes that the tests leave out: a file of 5 GiB, 4.2 GiB that cannot be compressed, 70,000
# files, and a disk that is full. Each is checked with other programs, and no run may take more than 64 MiB of memory.
# FOLDER is where to work (default: the system's temporary folder); it wants 14 GiB free. The full disk is a small tmpfs,
# which only root can mount; without root that part is left out and said so. Build the preset linux first.
set -euo pipefail
programs=$(realpath "$(dirname "${BASH_SOURCE[0]}")/../build/linux")
zip=$programs/bench/quillmoor-zip stub=$programs/src/console/MsSFX.bin
[ -x "$zip" ] && [ -e "$stub" ] || { echo "zip_large.sh: scripts/build.sh linux comes first" >&2; exit 2; }
export LC_ALL=C.UTF-8
work=$(mktemp -d -p "${1:-${TMPDIR:-/tmp}}" quillmoor-large.XXXXXX)
trap 'umount "$work/disk" 2>/dev/null || true; rm -rf "$work"' EXIT
cd "$work"
failed=0
fail() { echo "FAILED: $*" >&2; failed=1; }
step() { printf '\n== %s\n' "$*"; }
check() { "$@" >"$work/out" 2>&1 </dev/null || { fail "status $?: $*"; tail -n 5 "$work/out" >&2; }; }
packs() {                                         # as quillmoor-zip, and what it took
  /usr/bin/python3 - "$zip" --figures "$@" <<'PY' || fail "packing"
import resource, subprocess, sys, time
start = time.monotonic()
status = subprocess.run(sys.argv[1:]).returncode
peak = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss / 1024
print("  %.1f s, %.1f MiB of memory" % (time.monotonic() - start, peak))
sys.exit(status != 0 or peak > 64)
PY
}

step "5 GiB, nearly all of it a hole"
mkdir tree
truncate -s 5G tree/sparse
for place in 0 1000 3000 5000; do printf 'data at %s MiB' "$place" | dd of=tree/sparse bs=1M seek="$place" conv=notrunc status=none; done
packs tree a.zip
check unzip -tq a.zip
check 7z t a.zip
7z x -so a.zip sparse | cmp - tree/sparse || fail "the file differs"
rm a.zip
packs --stub "$stub" --password secret --segments 1000000 tree a.exe
./a.exe --test <<<secret || fail "the self-extractor"
rm -r a.* tree

step "4.2 GiB that cannot be compressed, and a small file behind it"
mkdir tree
head -c 4509715660 /dev/urandom >tree/noise
echo behind >tree/small
packs tree a.zip
check unzip -tq a.zip
check python3 -m zipfile -t a.zip
rm a.zip
packs --segments 1000000000 tree a.zip
check 7z t a.zip
rm -r a.* tree

step "70,000 files"
mkdir tree
/usr/bin/python3 - <<'PY'
import os
for folder in range(70):
    os.mkdir("tree/%02d" % folder)
    for i in range(1000):
        with open("tree/%02d/file-%04d.txt" % (folder, i), "w") as f: f.write("file %d of %d\n" % (i, folder))
PY
packs tree a.zip
check 7z t a.zip
check unzip -tq a.zip
[ "$(/usr/bin/python3 -c 'import zipfile; print(len(zipfile.ZipFile("a.zip").namelist()))')" = 70070 ] || fail "not 70,070 entries"
rm a.zip
packs --stub "$stub" tree a.exe
check ./a.exe x
diff -r tree x >out || fail "unpacked by itself"
rm -r a.* tree x

step "A disk of 20 MiB that is full"
mkdir disk tree
head -c 30000000 /dev/urandom >tree/noise
if mount -t tmpfs -o size=20m tmpfs disk 2>/dev/null; then
  for options in "" "--segments 1000000"; do
    echo former >disk/a.zip
    status=0
    # shellcheck disable=SC2086
    "$zip" $options tree disk/a.zip 2>out || status=$?
    [ "$status" = 2 ] && grep -q 'No space left' out || fail "a full disk is not told"
    [ "$(find disk -mindepth 1)" = disk/a.zip ] && [ "$(cat disk/a.zip)" = former ] || fail "something is left or lost"
  done
  "$zip" --stub "$stub" tree a.exe
  status=0
  ./a.exe disk/x 2>out </dev/null || status=$?
  [ "$status" = 5 ] && grep -q 'No space left' out || fail "the self-extractor does not tell a full disk"
  [ "$(find disk/x -type f)" = "" ] || fail "half a file is left"
else
  echo "left out: only root can mount one"
fi

echo
[ "$failed" = 0 ] && echo ok
exit "$failed"
