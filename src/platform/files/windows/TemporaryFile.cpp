// A file that is open is held by that: who would remove it opens it without sharing, and cannot.
#include "platform/files/TemporaryFile.h"

#include <algorithm>
#include <utility>

#include "platform/files/LocalPath.h"
#include "platform/files/ReservedNames.h"
#include "platform/files/windows/MoveIntoPlace.h"
#include "platform/system/windows/Handle.h"
#include "platform/system/windows/SystemError.h"
#include "platform/system/windows/WideText.h"
#include "platform/system/windows/WindowsApi.h"

namespace quillmoor {
namespace {

constexpr std::uint64_t kLongTicks = std::uint64_t{24 * 60 * 60} * 10'000'000;
constexpr int kMostAttempts = 1000;

HANDLE handleOf(std::intptr_t number) {
  return reinterpret_cast<HANDLE>(number);
}

std::uint64_t ticksOf(const FILETIME& time) {
  return static_cast<std::uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

bool exists(const std::wstring& path) {
  return ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

}  // namespace

TemporaryFile::TemporaryFile(const std::string& folder, unsigned) {
  for (int attempt = 1;; ++attempt) {
    path_ = folder + NewTemporaryName();
    const HANDLE file =
        ::CreateFileW(WidePath(path_).c_str(), GENERIC_WRITE | DELETE, FILE_SHARE_READ | FILE_SHARE_DELETE,
                      nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file != INVALID_HANDLE_VALUE) {
      handle_ = reinterpret_cast<std::intptr_t>(file);
      return;
    }
    if (::GetLastError() != ERROR_FILE_EXISTS || attempt == kMostAttempts)
      RaiseLastError("cannot create", LocalPath(path_));
  }
}

TemporaryFile::~TemporaryFile() {
  if (handle_ != -1) ::CloseHandle(handleOf(handle_));
  if (!renamed_) ::DeleteFileW(WidePath(path_).c_str());
}

void TemporaryFile::write(std::string_view bytes) {
  constexpr std::size_t kAtOnce = std::size_t{1} << 30;
  while (!bytes.empty()) {
    DWORD written = 0;
    const auto size = static_cast<DWORD>(std::min(bytes.size(), kAtOnce));
    if (::WriteFile(handleOf(handle_), bytes.data(), size, &written, nullptr) == FALSE)
      RaiseLastError("cannot write", LocalPath(path_));
    bytes.remove_prefix(written);
  }
}

void TemporaryFile::flushToDisk() {
  if (::FlushFileBuffers(handleOf(handle_)) == FALSE) RaiseLastError("cannot flush", LocalPath(path_));
}

/// A handle that has written sets the file's time once more when it is closed. One that only reads takes its
/// place, so that the file is held all the time.
void TemporaryFile::finishWriting() {
  if (!std::exchange(writing_, false)) return;
  const HANDLE hold = ::CreateFileW(WidePath(path_).c_str(), GENERIC_READ,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
  if (hold == INVALID_HANDLE_VALUE) RaiseLastError("cannot write", LocalPath(path_));
  ::CloseHandle(handleOf(std::exchange(handle_, reinterpret_cast<std::intptr_t>(hold))));
}

void TemporaryFile::renameTo(const std::string& target, Renaming how) {
  const std::wstring from = WidePath(path_);
  const std::wstring to = WidePath(target);
  // ReplaceFile hands the old file's permissions and attributes on, which costs a dozen system calls more,
  // and wants the new one closed. It may fail halfway, with no file left under the name: then, as wherever it
  // fails, the plain move follows.
  const bool handOn = how.keepPermissions && exists(to);
  if (handOn) ::CloseHandle(handleOf(std::exchange(handle_, -1)));
  renamed_ = handOn && ::ReplaceFileW(to.c_str(), from.c_str(), nullptr, REPLACEFILE_IGNORE_MERGE_ERRORS,
                                      nullptr, nullptr) != FALSE;
  renamed_ = renamed_ || MoveIntoPlace(from, to, how.throughToDisk);
  if (renamed_) {
    if (handle_ != -1) ::CloseHandle(handleOf(std::exchange(handle_, -1)));
    return;
  }
  const DWORD error = ::GetLastError();
  // What was written is all there is of the file when nothing stands under its name: it stays to be found.
  if (handOn && !exists(to)) renamed_ = true;
  ::SetLastError(error);
  RaiseLastError("cannot write", LocalPath(target));
}

std::vector<std::string> ReservedNamesIn(const std::string& folder) {
  std::vector<std::string> names;
  const bool ended = folder.empty() || folder.ends_with(kLocalSeparator) || folder.ends_with('/');
  WIN32_FIND_DATAW found{};
  const HANDLE search =
      ::FindFirstFileW(WidePath(folder + (ended ? "" : "\\") + ".quillmoor-*").c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return names;
  do {
    std::string name = LocalPathText(std::filesystem::path(found.cFileName));
    if (IsReservedLocalName(name)) names.push_back(std::move(name));
  } while (::FindNextFileW(search, &found) != FALSE);
  ::FindClose(search);
  return names;
}

void RemoveUnheldFile(const std::string& path) {
  const Handle removed(::CreateFileW(WidePath(path).c_str(), DELETE, 0, nullptr, OPEN_EXISTING,
                                     FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
}

bool IsLongUnchanged(const std::string& path) {
  WIN32_FILE_ATTRIBUTE_DATA data{};
  FILETIME now{};
  ::GetSystemTimeAsFileTime(&now);
  return ::GetFileAttributesExW(WidePath(path).c_str(), GetFileExInfoStandard, &data) != FALSE &&
         ticksOf(now) > ticksOf(data.ftLastWriteTime) + kLongTicks;
}

}  // namespace quillmoor
