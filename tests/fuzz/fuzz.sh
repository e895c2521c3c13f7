#!/usr/bin/env bash
# fuzz.sh [SECONDS]   fuzzes each parser of files and of replies of servers and proxies for SECONDS (60), starting from the seeds
# beside this script. Needs clang with its fuzzing library. Inputs that fail, and the logs, are left in build/fuzz.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
seconds=${1:-60}
scripts/setup.sh clang libclang-rt-dev
mkdir -p build/fuzz
compile=(clang++ -std=c++20 -O1 -g -Isrc -Itests -DASIO_STANDALONE -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=undefined)
if command -v ccache >/dev/null; then compile=(ccache "${compile[@]}"); fi
failed=build/fuzz/failed
rm -f "$failed"

fuzz() {                                # NAME SOURCE...: in the background, one per processor at a time
  while [ "$(jobs -rp | wc -l)" -ge "$(nproc)" ]; do wait -n || true; done
  one "$@" >"build/fuzz/$1.log" 2>&1 && echo "fuzz: $1: $(grep -o 'number_of_executed_units: *[0-9]*' "build/fuzz/$1.log" |
    tr -dc 0-9) inputs" || { cat "build/fuzz/$1.log"; echo "fuzz: $1 FAILED" | tee -a "$failed"; } &
}
one() {
  local name=$1 object objects=()
  shift
  mkdir -p "build/fuzz/$name-corpus" "build/fuzz/$name-objects"
  for source in "$@"; do                # one by one, so that ccache can cache them
    case $source in -*) objects+=("$source"); continue ;; esac
    object=build/fuzz/$name-objects/$(tr / - <<<"${source%.cpp}").o
    "${compile[@]}" -c "$source" -o "$object" || return
    objects+=("$object")
  done
  "${compile[@]}" "${objects[@]}" -o "build/fuzz/$name" || return
  "build/fuzz/$name" -max_total_time="$seconds" -max_len=4096 -rss_limit_mb=1024 -timeout=10 -print_final_stats=1 \
    -artifact_prefix=build/fuzz/ "build/fuzz/$name-corpus" "tests/fuzz/seeds/$name"
}

common=(src/controls/BoundedFile.cpp src/base/Utf8.cpp src/platform/files/posix/LocalPath.cpp)
fuzz avi tests/fuzz/AviFuzz.cpp src/controls/{AviReader,Rle8}.cpp "${common[@]}"
fuzz rtf tests/fuzz/RtfFuzz.cpp src/controls/{RtfReader,RtfTokenizer}.cpp "${common[@]}"
fuzz socks tests/fuzz/SocksFuzz.cpp src/platform/net/{SocksProxy,PumpedIo}.cpp src/platform/system/posix/ErrorText.cpp
fuzz reply tests/fuzz/ReplyFuzz.cpp src/platform/ftp/{FtpReply,FtpWording}.cpp src/platform/system/PrintableText.cpp src/base/Utf8.cpp src/platform/system/posix/CodePage.cpp
fuzz listing tests/fuzz/ListingFuzz.cpp src/engine/Listing*.cpp src/platform/system/LocalDateTime.cpp src/platform/system/posix/LocalTime.cpp
fuzz unpack tests/fuzz/UnpackFuzz.cpp src/sfx/EntryName.cpp src/platform/zip/{Segments,ZipReader}.cpp src/engine/{SafeName,mCreatePath}.cpp \
  src/platform/system/{LocalDateTime,PrintableText}.cpp src/platform/files/{AtomicFile,ReservedNames,WorkFolder}.cpp src/base/Utf8.cpp src/platform/zip/ZipCrypto.cpp \
  src/platform/files/posix/{AtomicFile,Files,LocalPath,TargetLock}.cpp src/platform/system/posix/{CodePage,ErrorText,LocalTime}.cpp -lz -lnettle -lgtest
fuzz registry tests/fuzz/RegistryFuzz.cpp src/platform/registry/RegistryFile.cpp src/base/Utf8.cpp src/platform/system/posix/CodePage.cpp
fuzz ini tests/fuzz/IniFuzz.cpp src/platform/files/{FileSet,ReservedNames,AtomicFile,WorkFolder}.cpp src/platform/system/Notices.cpp src/platform/ini/PrivateProfileEdit.cpp src/base/Utf8.cpp \
  src/platform/files/posix/{AtomicFile,Files,FolderLock,LocalPath,PrivateFile,TargetLock}.cpp src/platform/system/posix/{CodePage,ErrorText,ProgramFolder}.cpp src/platform/ini/posix/PrivateProfile.cpp -lgtest
wait
[ ! -e "$failed" ]
