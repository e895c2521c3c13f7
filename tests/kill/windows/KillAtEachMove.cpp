// A process that replaces a file, an archive in segments and a copy of that is killed at its first call that
// changes a name, at its second, and so on until it gets through.
#include <process.h>
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <stdexcept>
#include <string>

#include "platform/files/AtomicFile.h"
#include "platform/files/CopyFile.h"
#include "platform/files/FileSet.h"
#include "platform/zip/ZipArchive.h"

// The entries of the import table through which the whole program calls these functions.
extern "C" {
extern decltype(&::MoveFileExW) __imp_MoveFileExW;
extern decltype(&::DeleteFileW) __imp_DeleteFileW;
extern decltype(&::CreateDirectoryW) __imp_CreateDirectoryW;
extern decltype(&::RemoveDirectoryW) __imp_RemoveDirectoryW;
}

namespace {

using namespace quillmoor;
namespace fs = std::filesystem;
using Files = std::map<std::string, std::string>;  // contents by path

constexpr UINT kKilled = 9;
constexpr std::int64_t kSegment = 65'536;

// --- in the child

int killAt = 0;

template <auto& place, class... Arguments>
struct Counted {
  static inline auto* const call = place;
  static BOOL WINAPI instead(Arguments... arguments) {
    if (--killAt == 0) ::TerminateProcess(::GetCurrentProcess(), kKilled);
    return call(arguments...);
  }
  static void install() {
    DWORD before = 0;
    ::VirtualProtect(&place, sizeof place, PAGE_READWRITE, &before);
    place = instead;
  }
};

void countCalls() {
  Counted<__imp_MoveFileExW, LPCWSTR, LPCWSTR, DWORD>::install();
  Counted<__imp_DeleteFileW, LPCWSTR>::install();
  Counted<__imp_CreateDirectoryW, LPCWSTR, LPSECURITY_ATTRIBUTES>::install();
  Counted<__imp_RemoveDirectoryW, LPCWSTR>::install();
}

void replaceAll(const fs::path& work, const std::string& word) {
  AtomicFile file((work / "tree" / "file").string());
  file.write(word);
  file.commit();
  ZipArchive archive;
  archive.addFiles((work / word / "*").string(), true);
  ZipSegmentOptions segments;
  segments.segmentBytes = kSegment;
  const ZipResult result = archive.write((work / "backup" / "a.zip").string(), segments);
  std::vector<FileCopy> copies;
  for (const std::string& path : result.paths)
    copies.push_back({path, (work / "copies" / fs::path(path).filename()).string()});
  CopyWholeFiles(copies, {});
}

// --- in the test

void expect(bool holds, const std::string& what) {
  if (!holds) throw std::runtime_error(what);
}

Files filesIn(const fs::path& folder) {
  Files files;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    std::ifstream stream(entry.path(), std::ios::binary);
    files[entry.path().lexically_relative(folder).string()] = {std::istreambuf_iterator<char>(stream), {}};
  }
  return files;
}

void writeSource(const fs::path& folder, std::size_t bytes) {
  fs::create_directories(folder);
  std::mt19937 random(static_cast<std::mt19937::result_type>(bytes));
  std::string noise(bytes, '\0');
  for (char& byte : noise) byte = static_cast<char>(random());
  std::ofstream(folder / "noise", std::ios::binary) << noise;
}

void killAtEachMove(const fs::path& work) {
  const char* const folders[] = {"tree", "backup", "copies"};
  writeSource(work / "old", 100'000);
  writeSource(work / "new", 250'000);  // in more segments
  for (const char* const folder : folders) fs::create_directory(work / folder);
  std::map<std::string, Files> former, after;
  replaceAll(work, "old");
  for (const char* const folder : folders) former[folder] = filesIn(work / folder);
  replaceAll(work, "new");
  for (const char* const folder : folders) after[folder] = filesIn(work / folder);
  expect(former["copies"].size() == 2 && after["copies"].size() == 4, "not the sets that are meant");

  const std::string quoted = "\"" + work.string() + "\"";
  int n = 1;
  for (;; ++n) {
    for (const char* const folder : folders) {
      fs::remove_all(work / folder);
      fs::create_directory(work / folder);
      for (const auto& [name, contents] : former[folder])
        std::ofstream(work / folder / name, std::ios::binary) << contents;
    }
    const std::intptr_t status =
        ::_spawnl(_P_WAIT, _pgmptr, "child", std::to_string(n).c_str(), quoted.c_str(), nullptr);
    if (status == 0) break;
    expect(status == kKilled, "the child has failed");
    for (const char* const folder : folders) {
      EndKilledExchanges((work / folder).string());
      const Files left = filesIn(work / folder);
      expect(left == former[folder] || left == after[folder],
             std::string(folder) + " is neither old nor new after a kill at call " + std::to_string(n));
    }
  }
  for (const char* const folder : folders)
    expect(filesIn(work / folder) == after[folder], "the child that gets through does not do its work");
  expect(n > 20, "only " + std::to_string(n - 1) + " calls change names");
  std::printf("ok: killed at each of %d calls\n", n - 1);
}

}  // namespace

int main(int count, char** arguments) {
  if (count == 3) {
    killAt = std::atoi(arguments[1]);
    countCalls();
    replaceAll(arguments[2], "new");
    return 0;
  }
  const fs::path work =
      fs::temp_directory_path() / ("quillmoor-kill-" + std::to_string(::GetCurrentProcessId()));
  fs::create_directory(work);
  int status = 0;
  try {
    killAtEachMove(work);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "FAILED: %s\n", error.what());
    status = 1;
  }
  std::error_code ignored;
  fs::remove_all(work, ignored);
  return status;
}
