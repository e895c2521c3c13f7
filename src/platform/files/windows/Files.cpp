#include "platform/files/Files.h"

#include <algorithm>

#include "platform/files/LocalPath.h"
#include "platform/files/windows/RaiseError.h"
#include "platform/system/windows/Handle.h"
#include "platform/system/windows/SystemTime.h"
#include "platform/system/windows/WideText.h"
#include "platform/system/windows/WindowsApi.h"

namespace quillmoor {

const std::uint8_t kArchiveHostSystem = 0;

namespace {

constexpr DWORD kKeptAttributes =
    FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE;
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr std::int64_t kTicksInASecond = 10'000'000, kSecondsFrom1601To1970 = 11'644'473'600;
constexpr std::size_t kAtOnce = std::size_t{1} << 30;

HANDLE handleOf(std::intptr_t number) {
  return reinterpret_cast<HANDLE>(number);
}

/// -1 for INVALID_HANDLE_VALUE.
std::intptr_t numberOf(HANDLE handle) {
  return reinterpret_cast<std::intptr_t>(handle);
}

DWORD attributesOf(const std::string& path) {
  return ::GetFileAttributesW(WidePath(path).c_str());
}

/// For a file that other programs may have open in whatever way. FILE_FLAG_BACKUP_SEMANTICS opens folders.
Handle openShared(const std::string& path, DWORD access, DWORD flags) {
  return Handle(
      ::CreateFileW(WidePath(path).c_str(), access, kShareAll, nullptr, OPEN_EXISTING, flags, nullptr));
}

FileState stateOf(DWORD attributes, const FILETIME& modified, DWORD sizeHigh, DWORD sizeLow) {
  const auto join = [](DWORD high, DWORD low) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(high) << 32 | low);
  };
  const std::int64_t ticks = join(modified.dwHighDateTime, modified.dwLowDateTime);
  const bool folder = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  return {folder ? 0 : join(sizeHigh, sizeLow), ticks / kTicksInASecond - kSecondsFrom1601To1970,
          ticks % kTicksInASecond * 100, attributes & (kKeptAttributes | FILE_ATTRIBUTE_DIRECTORY)};
}

OVERLAPPED placeAt(std::int64_t offset) {
  OVERLAPPED place{};
  place.Offset = static_cast<DWORD>(offset);
  place.OffsetHigh = static_cast<DWORD>(offset >> 32);
  return place;
}

/// Links and mount points lead elsewhere; other reparse points (files kept in a cloud, compressed ones) are
/// files.
FileKind kindOf(const WIN32_FIND_DATAW& found) {
  if ((found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
      IsReparseTagNameSurrogate(found.dwReserved0))
    return FileKind::link;
  return (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? FileKind::folder : FileKind::file;
}

}  // namespace

std::optional<FileKind> pathKind(const std::string& path) {
  WIN32_FIND_DATAW found{};
  const std::wstring wide = WidePath(path);
  found.dwFileAttributes = ::GetFileAttributesW(wide.c_str());
  if (found.dwFileAttributes == INVALID_FILE_ATTRIBUTES) return std::nullopt;
  if ((found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
    // Only a search tells which kind of reparse point it is.
    const HANDLE search = ::FindFirstFileW(wide.c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return std::nullopt;
    ::FindClose(search);
  }
  return kindOf(found);
}

bool pathExists(const std::string& path) {
  return attributesOf(path) != INVALID_FILE_ATTRIBUTES;
}

bool folderExists(const std::string& path) {
  const DWORD attributes = attributesOf(path);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool mayBeWritten(const std::string& path) {
  return static_cast<bool>(openShared(path, GENERIC_WRITE, 0));
}

bool mayBeReplaced(const std::string& path) {
  const DWORD attributes = attributesOf(path);
  return attributes == INVALID_FILE_ATTRIBUTES ||
         (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY)) == 0;
}

bool sameFile(const std::string& a, const std::string& b) {
  const auto identify = [](const std::string& path, BY_HANDLE_FILE_INFORMATION& information) {
    const Handle file = openShared(path, FILE_READ_ATTRIBUTES, FILE_FLAG_BACKUP_SEMANTICS);
    return file && ::GetFileInformationByHandle(file.get(), &information) != FALSE;
  };
  BY_HANDLE_FILE_INFORMATION first{}, second{};
  return identify(a, first) && identify(b, second) &&
         first.dwVolumeSerialNumber == second.dwVolumeSerialNumber &&
         first.nFileIndexHigh == second.nFileIndexHigh && first.nFileIndexLow == second.nFileIndexLow;
}

FileState fileState(const std::string& path) {
  WIN32_FILE_ATTRIBUTE_DATA data{};
  if (::GetFileAttributesExW(WidePath(path).c_str(), GetFileExInfoStandard, &data) == FALSE)
    RaiseError("cannot read", path);
  return stateOf(data.dwFileAttributes, data.ftLastWriteTime, data.nFileSizeHigh, data.nFileSizeLow);
}

std::optional<FileTimes> fileTimes(const std::string& path) {
  const Handle file = openShared(path, GENERIC_READ, 0);
  FILETIME created, accessed, modified;
  if (!file || ::GetFileTime(file.get(), &created, &accessed, &modified) == FALSE) return std::nullopt;
  return FileTimes{FromFileTime(created), FromFileTime(accessed), FromFileTime(modified)};
}

void readFolder(const std::string& path, bool mayBeLink,
                const std::function<void(const std::string&, FileKind)>& item) {
  const DWORD attributes = attributesOf(path);
  if (attributes == INVALID_FILE_ATTRIBUTES) RaiseError("cannot open", path);
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0 || (!mayBeLink && pathKind(path) == FileKind::link))
    RaiseError("cannot open", path, ERROR_DIRECTORY);
  WIN32_FIND_DATAW found{};
  const HANDLE search = ::FindFirstFileW(WidePath(PathIn(path, "*")).c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) {
    if (::GetLastError() == ERROR_FILE_NOT_FOUND) return;  // an empty root has not even "."
    RaiseError("cannot open", path);
  }
  struct Close {
    HANDLE search;
    ~Close() { ::FindClose(search); }
  } const closeAtEnd{search};
  do {
    const std::string name = Narrow(found.cFileName);
    if (name == "." || name == "..") continue;
    item(name, kindOf(found));
  } while (::FindNextFileW(search, &found) != FALSE);
  if (::GetLastError() != ERROR_NO_MORE_FILES) RaiseError("cannot read", path);
}

std::error_code createFolder(const std::string& path) {
  if (::CreateDirectoryW(WidePath(path).c_str(), nullptr) != FALSE) return {};
  return {static_cast<int>(::GetLastError()), SystemErrors()};
}

void renameFile(const std::string& from, const std::string& to, bool throughToDisk) {
  constexpr int kTries = 26;
  constexpr DWORD kRetryMs = 20;
  const DWORD flags = MOVEFILE_REPLACE_EXISTING | (throughToDisk ? DWORD{MOVEFILE_WRITE_THROUGH} : 0);
  for (int tries = 1; ::MoveFileExW(WidePath(from).c_str(), WidePath(to).c_str(), flags) == FALSE; ++tries) {
    const DWORD error = ::GetLastError();
    // Access denied does not pass for a folder, for a read-only file, and where there is no file to replace.
    const bool mayPass = error == ERROR_SHARING_VIOLATION ||
                         (error == ERROR_ACCESS_DENIED && pathExists(to) && mayBeReplaced(to));
    if (tries == kTries || !mayPass) RaiseError("cannot write", to, error);
    ::Sleep(kRetryMs);
  }
}

bool removeFile(const std::string& path) noexcept {
  try {
    return ::DeleteFileW(WidePath(path).c_str()) != FALSE;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

bool removeFolder(const std::string& path) noexcept {
  try {
    return ::RemoveDirectoryW(WidePath(path).c_str()) != FALSE;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

bool flushFile(const std::string& path) {
  const Handle file = openShared(path, GENERIC_WRITE, 0);
  return file && ::FlushFileBuffers(file.get()) != FALSE;
}

bool setModifiedTime(const std::string& path, std::chrono::sys_seconds modified) {
  const Handle file = openShared(path, GENERIC_WRITE, 0);
  const FILETIME time = ToFileTime(modified);
  return file && ::SetFileTime(file.get(), nullptr, nullptr, &time) != FALSE;
}

void restoreState(const std::string& path, const FileState& state, std::uint8_t) {
  bool timed = false;
  DWORD error = 0;
  {
    const Handle file =
        openShared(path, FILE_WRITE_ATTRIBUTES, FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT);
    const std::int64_t ticks =
        (state.modifiedSeconds + kSecondsFrom1601To1970) * kTicksInASecond + state.modifiedNanoseconds / 100;
    const FILETIME modified{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    timed = file && ::SetFileTime(file.get(), nullptr, nullptr, &modified) != FALSE;
    error = ::GetLastError();
  }
  // The low byte means the same whatever system the entry comes from.
  const DWORD attributes = state.attributes & kKeptAttributes;
  if (attributes != 0 && ::SetFileAttributesW(WidePath(path).c_str(), attributes) == FALSE)
    RaiseError("cannot set the attributes of", path);
  if (!timed) RaiseError("cannot set the time of", path, error);
}

OpenFile::~OpenFile() {
  if (handle_ != kNone) ::CloseHandle(handleOf(handle_));
}

FileState OpenFile::state() const {
  BY_HANDLE_FILE_INFORMATION information{};
  if (::GetFileInformationByHandle(handleOf(handle_), &information) == FALSE)
    RaiseError("cannot read", path_);
  return stateOf(information.dwFileAttributes, information.ftLastWriteTime, information.nFileSizeHigh,
                 information.nFileSizeLow);
}

std::size_t OpenFile::readAt(std::int64_t offset, std::span<std::uint8_t> bytes) const {
  std::size_t done = 0;
  while (done < bytes.size()) {
    OVERLAPPED place = placeAt(offset + static_cast<std::int64_t>(done));
    DWORD got = 0;
    const auto wanted = static_cast<DWORD>(std::min(bytes.size() - done, kAtOnce));
    const bool read = ::ReadFile(handleOf(handle_), bytes.data() + done, wanted, &got, &place) != FALSE;
    if (!read && ::GetLastError() != ERROR_HANDLE_EOF) RaiseError("cannot read", path_);
    if (!read || got == 0) break;
    done += got;
  }
  return done;
}

void OpenFile::writeAt(std::int64_t offset, std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    OVERLAPPED place = placeAt(offset);
    DWORD written = 0;
    const auto wanted = static_cast<DWORD>(std::min(bytes.size(), kAtOnce));
    if (::WriteFile(handleOf(handle_), bytes.data(), wanted, &written, &place) == FALSE)
      RaiseError("cannot write", path_);
    bytes = bytes.subspan(written);
    offset += written;
  }
}

void OpenFile::close() {
  if (::CloseHandle(handleOf(std::exchange(handle_, kNone))) == FALSE) RaiseError("cannot write", path_);
}

InputFile::InputFile(const std::string& path, bool mayBeLink)
    : OpenFile(path, numberOf(::CreateFileW(WidePath(path).c_str(), GENERIC_READ, kShareAll, nullptr,
                                            OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr))) {
  if (handle_ == kNone) RaiseError("cannot open", path);
  if (::GetFileType(handleOf(handle_)) != FILE_TYPE_DISK)
    RaiseError("cannot read", path, ERROR_BAD_FILE_TYPE);
  // Looked at by name: a handle that follows no link would not read files kept in a cloud or deduplicated.
  if (!mayBeLink && pathKind(path) == FileKind::link) RaiseError("cannot open", path, ERROR_CANT_ACCESS_FILE);
}

OutputFile::OutputFile(const std::string& path, bool)
    : OpenFile(path, numberOf(::CreateFileW(WidePath(path).c_str(), GENERIC_READ | GENERIC_WRITE,
                                            FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, CREATE_NEW,
                                            FILE_ATTRIBUTE_NORMAL, nullptr))) {
  if (handle_ == kNone) RaiseError("cannot create", path);
}

OutputFile OutputFile::existing(const std::string& path) {
  OutputFile file(path,
                  numberOf(::CreateFileW(WidePath(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                         OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, nullptr)));
  if (file.handle_ == kNone) RaiseError("cannot write", path);
  return file;
}

}  // namespace quillmoor
