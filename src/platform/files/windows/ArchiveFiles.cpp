#include "platform/files/ArchiveFiles.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "platform/files/LocalPath.h"
#include "platform/files/windows/MoveIntoPlace.h"
#include "platform/system/windows/Handle.h"
#include "platform/system/windows/SystemError.h"
#include "platform/system/windows/WideText.h"
#include "platform/system/windows/WindowsApi.h"

namespace quillmoor {

const std::uint8_t kArchiveHostSystem = 0;

namespace {

constexpr DWORD kKeptAttributes =
    FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE;
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr std::int64_t kTicksInASecond = 10'000'000, kSecondsFrom1601To1970 = 11'644'473'600;

HANDLE handleOf(std::intptr_t number) {
  return reinterpret_cast<HANDLE>(number);
}

[[noreturn]] void fail(const char* what, const std::string& path, DWORD error = ::GetLastError()) {
  ::SetLastError(error);
  RaiseLastError(what, LocalPath(path));
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

void writeAll(HANDLE file, const std::string& path, std::int64_t offset,
              std::span<const std::uint8_t> bytes) {
  constexpr std::size_t kAtOnce = std::size_t{1} << 30;
  while (!bytes.empty()) {
    OVERLAPPED place = placeAt(offset);
    DWORD written = 0;
    if (::WriteFile(file, bytes.data(), static_cast<DWORD>(std::min(bytes.size(), kAtOnce)), &written,
                    &place) == FALSE)
      fail("cannot write", path);
    bytes = bytes.subspan(written);
    offset += written;
  }
}

std::size_t readAll(HANDLE file, const std::string& path, std::int64_t offset,
                    std::span<std::uint8_t> bytes) {
  std::size_t done = 0;
  while (done < bytes.size()) {
    OVERLAPPED place = placeAt(offset + static_cast<std::int64_t>(done));
    DWORD got = 0;
    const auto wanted = static_cast<DWORD>(std::min<std::size_t>(bytes.size() - done, std::size_t{1} << 30));
    if (::ReadFile(file, bytes.data() + done, wanted, &got, &place) == FALSE) {
      if (::GetLastError() == ERROR_HANDLE_EOF) break;
      fail("cannot read", path);
    }
    if (got == 0) break;
    done += got;
  }
  return done;
}

Handle openFolder(const std::string& path) {
  return Handle(::CreateFileW(WidePath(path).c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING,
                              FILE_FLAG_BACKUP_SEMANTICS, nullptr));
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

void readFolder(const std::string& path, bool mayBeLink,
                const std::function<void(const std::string&, FileKind)>& item) {
  const DWORD attributes = ::GetFileAttributesW(WidePath(path).c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) fail("cannot open", path);
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0 || (!mayBeLink && pathKind(path) == FileKind::link))
    fail("cannot open", path, ERROR_DIRECTORY);
  const bool ended = path.ends_with(kLocalSeparator) || path.ends_with('/');
  WIN32_FIND_DATAW found{};
  const HANDLE search = ::FindFirstFileW(WidePath(path + (ended ? "*" : "\\*")).c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) {
    if (::GetLastError() == ERROR_FILE_NOT_FOUND) return;  // an empty root has not even "."
    fail("cannot open", path);
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
  if (::GetLastError() != ERROR_NO_MORE_FILES) fail("cannot read", path);
}

FileState folderState(const std::string& path) {
  WIN32_FILE_ATTRIBUTE_DATA data{};
  if (::GetFileAttributesExW(WidePath(path).c_str(), GetFileExInfoStandard, &data) == FALSE)
    fail("cannot read", path);
  return stateOf(data.dwFileAttributes, data.ftLastWriteTime, 0, 0);
}

bool sameFolder(const std::string& a, const std::string& b) {
  const auto identify = [](const std::string& path, BY_HANDLE_FILE_INFORMATION& information) {
    const Handle folder = openFolder(path);
    return folder && ::GetFileInformationByHandle(folder.get(), &information) != FALSE;
  };
  BY_HANDLE_FILE_INFORMATION first{}, second{};
  return identify(a, first) && identify(b, second) &&
         first.dwVolumeSerialNumber == second.dwVolumeSerialNumber &&
         first.nFileIndexHigh == second.nFileIndexHigh && first.nFileIndexLow == second.nFileIndexLow;
}

InputFile::InputFile(const std::string& path, bool mayBeLink) : path_(path), handle_(-1) {
  const HANDLE file = ::CreateFileW(WidePath(path).c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
  if (file == INVALID_HANDLE_VALUE) fail("cannot open", path);
  if (::GetFileType(file) != FILE_TYPE_DISK) {
    ::CloseHandle(file);
    fail("cannot read", path, ERROR_BAD_FILE_TYPE);
  }
  // Looked at by name: a handle that follows no link would not read files kept in a cloud or deduplicated.
  if (!mayBeLink && pathKind(path) == FileKind::link) {
    ::CloseHandle(file);
    fail("cannot open", path, ERROR_CANT_ACCESS_FILE);
  }
  handle_ = reinterpret_cast<std::intptr_t>(file);
}

InputFile::~InputFile() {
  if (handle_ != -1) ::CloseHandle(handleOf(handle_));
}

InputFile::InputFile(InputFile&& other) noexcept
    : path_(std::move(other.path_)), handle_(std::exchange(other.handle_, -1)), position_(other.position_) {}

FileState InputFile::state() const {
  BY_HANDLE_FILE_INFORMATION information{};
  if (::GetFileInformationByHandle(handleOf(handle_), &information) == FALSE) fail("cannot read", path_);
  return stateOf(information.dwFileAttributes, information.ftLastWriteTime, information.nFileSizeHigh,
                 information.nFileSizeLow);
}

std::size_t InputFile::read(std::span<std::uint8_t> bytes) {
  const std::size_t got = readAll(handleOf(handle_), path_, position_, bytes);
  position_ += static_cast<std::int64_t>(got);
  return got;
}

std::size_t InputFile::readAt(std::int64_t offset, std::span<std::uint8_t> bytes) const {
  return readAll(handleOf(handle_), path_, offset, bytes);
}

OutputFile::OutputFile(const std::string& path, bool) : path_(path), handle_(-1) {
  const HANDLE file =
      ::CreateFileW(WidePath(path).c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE,
                    nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) fail("cannot create", path);
  handle_ = reinterpret_cast<std::intptr_t>(file);
}

OutputFile::~OutputFile() {
  if (handle_ != -1) ::CloseHandle(handleOf(handle_));
}

void OutputFile::write(std::span<const std::uint8_t> bytes) {
  writeAll(handleOf(handle_), path_, size_, bytes);
  size_ += static_cast<std::int64_t>(bytes.size());
}

void OutputFile::writeAt(std::int64_t offset, std::span<const std::uint8_t> bytes) {
  writeAll(handleOf(handle_), path_, offset, bytes);
}

std::size_t OutputFile::readAt(std::int64_t offset, std::span<std::uint8_t> bytes) const {
  return readAll(handleOf(handle_), path_, offset, bytes);
}

void OutputFile::close() {
  if (::CloseHandle(handleOf(std::exchange(handle_, -1))) == FALSE) fail("cannot write", path_);
}

void OutputFile::patch(const std::string& path, std::int64_t offset, std::span<const std::uint8_t> bytes) {
  const Handle file(::CreateFileW(WidePath(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                  OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  if (!file) fail("cannot write", path);
  writeAll(file.get(), path, offset, bytes);
}

void restoreState(const std::string& path, const FileState& state, std::uint8_t) {
  bool timed = false;
  DWORD error = 0;
  {
    const Handle file(::CreateFileW(WidePath(path).c_str(), FILE_WRITE_ATTRIBUTES, kShareAll, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT,
                                    nullptr));
    const std::int64_t ticks =
        (state.modifiedSeconds + kSecondsFrom1601To1970) * kTicksInASecond + state.modifiedNanoseconds / 100;
    const FILETIME modified{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    timed = file && ::SetFileTime(file.get(), nullptr, nullptr, &modified) != FALSE;
    error = ::GetLastError();
  }
  // The low byte means the same whatever system the entry comes from.
  const DWORD attributes = state.attributes & kKeptAttributes;
  if (attributes != 0 && ::SetFileAttributesW(WidePath(path).c_str(), attributes) == FALSE)
    fail("cannot set the attributes of", path);
  if (!timed) fail("cannot set the time of", path, error);
}

bool mayBeReplaced(const std::string& path) {
  const DWORD attributes = ::GetFileAttributesW(WidePath(path).c_str());
  return attributes == INVALID_FILE_ATTRIBUTES ||
         (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY)) == 0;
}

void createFolder(const std::string& path) {
  if (::CreateDirectoryW(WidePath(path).c_str(), nullptr) == FALSE) fail("cannot create", path);
}

void renameFile(const std::string& from, const std::string& to) {
  if (!MoveIntoPlace(WidePath(from), WidePath(to))) fail("cannot write", to);
}

bool removeFile(const std::string& path) noexcept {
  try {
    return ::DeleteFileW(WidePath(path).c_str()) != FALSE;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

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

}  // namespace quillmoor
