// A file that is opened without sharing and removed by the system with its last handle: no other process can
// open it, on this machine or, on a share, on another.
#include "platform/files/TargetLock.h"

#include <utility>

#include "platform/files/ReservedNames.h"
#include "platform/files/windows/RaiseError.h"
#include "platform/system/windows/Handle.h"
#include "platform/system/windows/WideText.h"
#include "platform/system/windows/WindowsApi.h"

namespace quillmoor {
namespace {

constexpr int kTries = 26;
constexpr DWORD kRetryMs = 20;

/// Restores the folder's time of last change at the end of its life.
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
  const std::string path = PathIn(folder, kLockFileName);
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
    // Access is denied also while the file is being removed.
    if (error != ERROR_ACCESS_DENIED || tries == kTries) RaiseError("cannot open", path, error);
    ::Sleep(kRetryMs);
  }
}

TargetLock::TargetLock(std::string folder, std::intptr_t handle, bool enforced)
    : folder_(std::move(folder)), handle_(handle), enforced_(enforced) {}

TargetLock::~TargetLock() {
  const FolderTime keepTime(folder_);
  ::CloseHandle(reinterpret_cast<HANDLE>(handle_));
}

}  // namespace quillmoor
