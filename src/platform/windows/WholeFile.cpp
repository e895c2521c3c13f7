#include "platform/WholeFile.h"

#include <windows.h>

#include <algorithm>
#include <system_error>
#include <utility>

#include "platform/windows/MoveIntoPlace.h"
#include "platform/windows/SystemError.h"
#include "platform/windows/WideText.h"

namespace quillmoor {
namespace {

HANDLE handleOf(std::intptr_t number) {
  return reinterpret_cast<HANDLE>(number);
}

bool exists(const std::wstring& path) {
  return ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

}  // namespace

std::filesystem::path WholeFile::temporaryName(const std::filesystem::path& folder) {
  return folder / L".quillmoor-unfinished.tmp";
}

WholeFile::WholeFile(std::filesystem::path target, Survives survives, Readers readers)
    : target_(std::move(target)), survives_(survives), readers_(readers) {
  temporary_ = temporaryName(target_.parent_path());
  if (temporary_ == target_) temporary_ += L"2";
  // Without following: a link planted under the temporary name must not lead the bytes elsewhere. Truncated
  // only when that is known not to be one.
  const HANDLE file =
      ::CreateFileW(WidePath(temporary_).c_str(), GENERIC_WRITE | DELETE, FILE_SHARE_READ | FILE_SHARE_DELETE,
                    nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
  if (file == INVALID_HANDLE_VALUE) RaiseLastError("cannot create", temporary_);
  BY_HANDLE_FILE_INFORMATION found{};
  const bool plain = ::GetFileInformationByHandle(file, &found) != FALSE &&
                     (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0;
  if (!plain || ::SetEndOfFile(file) == FALSE) {
    ::CloseHandle(file);
    ::SetLastError(ERROR_CANNOT_MAKE);
    RaiseLastError("cannot create", temporary_);
  }
  handle_ = reinterpret_cast<std::intptr_t>(file);
}

WholeFile::~WholeFile() {
  if (handle_ == -1) return;
  ::CloseHandle(handleOf(handle_));
  ::DeleteFileW(WidePath(temporary_).c_str());
}

void WholeFile::write(std::string_view bytes) {
  constexpr std::size_t kAtOnce = std::size_t{1} << 30;
  while (!bytes.empty()) {
    DWORD written = 0;
    const auto size = static_cast<DWORD>(std::min(bytes.size(), kAtOnce));
    if (::WriteFile(handleOf(handle_), bytes.data(), size, &written, nullptr) == FALSE) {
      RaiseLastError("cannot write", temporary_);
    }
    bytes.remove_prefix(written);
  }
}

void WholeFile::commit() {
  const HANDLE file = handleOf(handle_);
  if (survives_ == Survives::power && ::FlushFileBuffers(file) == FALSE)
    RaiseLastError("cannot flush", temporary_);
  handle_ = -1;
  ::CloseHandle(file);
  const std::wstring from = WidePath(temporary_);
  const std::wstring to = WidePath(target_);
  const bool flush = survives_ == Survives::power;
  // ReplaceFile hands the old file's permissions and attributes on, which costs a dozen system calls more. It
  // may fail halfway, with no file left under the name: then, as wherever it fails, the plain move follows.
  const bool handOn = readers_ == Readers::owner && exists(to);
  if (handOn && ::ReplaceFileW(to.c_str(), from.c_str(), nullptr, REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr,
                               nullptr) != FALSE) {
    return;
  }
  if (MoveIntoPlace(from, to, flush)) return;
  const DWORD error = ::GetLastError();
  // What was written is all there is of the file when nothing stands under its name: it stays to be found.
  if (!handOn || exists(to)) ::DeleteFileW(from.c_str());
  ::SetLastError(error);
  RaiseLastError("cannot write", target_);
}

}  // namespace quillmoor
