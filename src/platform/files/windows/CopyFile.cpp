#include "platform/files/CopyFile.h"

#include <system_error>

#include "platform/files/LocalPath.h"
#include "platform/system/windows/Handle.h"
#include "platform/system/windows/SystemError.h"
#include "platform/system/windows/WideText.h"
#include "platform/system/windows/WindowsApi.h"

namespace quillmoor {
namespace {

[[noreturn]] void fail(DWORD error, const char* what, const std::string& path) {
  ::SetLastError(error);
  RaiseLastError(what, LocalPath(path));
}

/// What tells one state of a file from another.
struct Facts {
  BY_HANDLE_FILE_INFORMATION info{};
  bool known = false;

  explicit Facts(const std::wstring& path) {
    const Handle file(::CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    known = file && ::GetFileInformationByHandle(file.get(), &info) != FALSE;
  }
  bool isFolder() const { return (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0; }
  bool sameSize(const Facts& other) const {
    return info.nFileSizeHigh == other.info.nFileSizeHigh && info.nFileSizeLow == other.info.nFileSizeLow;
  }
  bool sameTime(const Facts& other) const {
    return ::CompareFileTime(&info.ftLastWriteTime, &other.info.ftLastWriteTime) == 0;
  }
};

DWORD CALLBACK lookWhetherEnded(LARGE_INTEGER, LARGE_INTEGER, LARGE_INTEGER, LARGE_INTEGER, DWORD, DWORD,
                                HANDLE, HANDLE, LPVOID ended) {
  return *static_cast<const std::atomic<bool>*>(ended) ? PROGRESS_CANCEL : PROGRESS_CONTINUE;
}

}  // namespace

void CopyFileTo(const std::string& temporary, const std::string& from, const std::atomic<bool>& ended) {
  const std::wstring source = WidePath(from);
  const Facts before(source);
  if (!before.known) fail(::GetLastError(), "cannot read", from);
  if (before.isFolder()) fail(ERROR_DIRECTORY, "no file:", from);
  const std::wstring target = WidePath(temporary);
  const BOOL copied =
      ::CopyFileExW(source.c_str(), target.c_str(), lookWhetherEnded, const_cast<std::atomic<bool>*>(&ended),
                    nullptr, COPY_FILE_FAIL_IF_EXISTS);
  const DWORD error = ::GetLastError();
  if (ended)
    throw std::system_error(std::make_error_code(std::errc::operation_canceled), "ended the copy of " + from);
  if (copied == FALSE) fail(error, "cannot write", temporary);
  const Facts after(source);
  const Facts copy(target);
  if (!after.known || !copy.known || !before.sameSize(after) || !before.sameTime(after) ||
      !before.sameSize(copy)) {
    fail(ERROR_FILE_INVALID, "changed while it was copied:", from);
  }
}

}  // namespace quillmoor
