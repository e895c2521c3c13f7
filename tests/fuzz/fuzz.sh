#!/usr/bin/env bash
# fuzz.sh [SECONDS]   feeds the readers of files, listings and a proxy's answers damaged ones, for so long each (60), on this
# machine's inputs and the seeds beside this script. Wants clang with its fuzzing library. What broke a reader is left in build/fuzz.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
seconds=${1:-60}
scripts/setup.sh clang libclang-rt-dev
mkdir -p build/fuzz
flags=(-std=c++20 -O1 -g -Isrc -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=undefined)
common=(src/controls/BoundedFile.cpp src/platform/Utf8.cpp src/platform/posix/LocalPath.cpp)
clang++ "${flags[@]}" tests/fuzz/AviFuzz.cpp src/controls/{AviReader,Rle8}.cpp "${common[@]}" -o build/fuzz/avi
clang++ "${flags[@]}" tests/fuzz/RtfFuzz.cpp src/controls/{RtfReader,RtfTokenizer}.cpp "${common[@]}" -o build/fuzz/rtf
clang++ "${flags[@]}" -DASIO_STANDALONE tests/fuzz/SocksFuzz.cpp src/platform/{SocksProxy,PumpedIo}.cpp src/platform/posix/ErrorText.cpp \
  -o build/fuzz/socks
clang++ "${flags[@]}" tests/fuzz/ReplyFuzz.cpp src/platform/{FtpReply,FtpWording}.cpp -o build/fuzz/reply
clang++ "${flags[@]}" tests/fuzz/ListingFuzz.cpp src/engine/Listing*.cpp src/platform/LocalDateTime.cpp src/platform/posix/LocalTime.cpp \
  -o build/fuzz/listing
clang++ "${flags[@]}" tests/fuzz/UnpackFuzz.cpp src/sfx/{EntryName,Segments,ZipReader}.cpp src/engine/{SafeName,mCreatePath}.cpp \
  src/platform/{LocalDateTime,Utf8,ZipCrypto}.cpp src/platform/posix/{ArchiveFiles,ErrorText,LocalFiles,LocalPath,LocalTime}.cpp -lz -lnettle -o build/fuzz/unpack
clang++ "${flags[@]}" tests/fuzz/RegistryFuzz.cpp src/platform/{RegistryFile,Utf8}.cpp src/platform/posix/CodePage.cpp -o build/fuzz/registry
clang++ "${flags[@]}" tests/fuzz/IniFuzz.cpp src/platform/{PrivateProfileEdit,Notices,Utf8}.cpp src/platform/posix/{CodePage,ErrorText,FolderLock}.cpp \
  src/platform/posix/{LocalFiles,LocalPath,PrivateFile,PrivateProfile,ProgramFolder,WholeFile}.cpp -o build/fuzz/ini
for reader in avi rtf socks reply listing unpack registry ini; do
  mkdir -p "build/fuzz/$reader-corpus"
  "build/fuzz/$reader" -max_total_time="$seconds" -max_len=4096 -rss_limit_mb=1024 -timeout=10 -print_final_stats=1 \
    -artifact_prefix=build/fuzz/ "build/fuzz/$reader-corpus" "tests/fuzz/seeds/$reader"
done
