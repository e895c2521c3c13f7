// A file that is open without sharing and removed by the system with its last handle: nobody else can open
// it, on this machine or, on a share, on another.
#include "platform/files/TargetLock.h"

#include <utility>

#include "platform/files/LocalPath.h"
#include "platform/files/ReservedNames.h"
#include "platform/system/windows/Handle.h"
#include "platform/system/windows/SystemError.h"
#include "platform/system/windows/WideText.h"
#include "platform/system/windows/WindowsApi.h"

namespace quillmoor {
namespace {

constexpr int kTries = 26;
constexpr DWORD kRestMs = 20;

/// Keeps the folder's time of last change over what is done in its lifetime.
class FolderTime {
 public:
  explicit FolderTime(const std::string& folder)
      : folder_(::CreateFileW(WidePath(folder).c_str(), FILE_READ_ATTRIBUTES | FILE_WRITE_ATTRIBUTES,
                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                              FILE_FLAG_BACKUP_SEMANTICS, nullptr)) {
    known_ = folder_ && ::GetFileTime(folder_.get(), nullptr, nullptr, &before_) != FALSE;
  }
  ~FolderTime() {
    if (known_) ::SetFileTime(folder_.get(), nullptr, nullptr, &before_);
  }
  FolderTime(const FolderTime&) = delete;
  FolderTime& operator=(const FolderTime&) = delete;

 private:
  const Handle folder_;
  FILETIME before_{};
  bool known_;
};

}  // namespace

std::unique_ptr<TargetLock> TargetLock::acquire(const std::string& folder) {
  const std::string path = folder + kLocalSeparator + kLockFileName;
  const std::wstring wide = WidePath(path);
  const FolderTime keepTime(folder);
  for (int tries = 1;; ++tries) {
    const HANDLE file = ::CreateFileW(
        wide.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE, 0, nullptr, OPEN_ALWAYS,
        FILE_ATTRIBUTE_HIDDEN | FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (file != INVALID_HANDLE_VALUE)
      return std::unique_ptr<TargetLock>(new TargetLock(folder, reinterpret_cast<std::intptr_t>(file), true));
    const DWORD error = ::GetLastError();
    if (error == ERROR_SHARING_VIOLATION) return nullptr;
    // Access is denied to a file that is just being removed, too.
    if (error != ERROR_ACCESS_DENIED || tries == kTries) {
      ::SetLastError(error);
      RaiseLastError("cannot open", LocalPath(path));
    }
    ::Sleep(kRestMs);
  }
}

TargetLock::TargetLock(std::string folder, std::intptr_t handle, bool enforced)
    : folder_(std::move(folder)), handle_(handle), enforced_(enforced) {}

TargetLock::~TargetLock() {
  const FolderTime keepTime(folder_);
  ::CloseHandle(reinterpret_cast<HANDLE>(handle_));
}

}  // namespace quillmoor
