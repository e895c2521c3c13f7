#include "platform/files/FolderLock.h"

#include <windows.h>

#include <functional>
#include <string>

#include "platform/system/windows/SystemError.h"
#include "platform/system/windows/WideText.h"

namespace quillmoor {
namespace {

/// The name of the lock; the same for every program of this user's session, in whatever case the folder is
/// written.
std::wstring lockName(const std::filesystem::path& folder) {
  std::wstring full = std::filesystem::absolute(folder).native();
  ::CharUpperBuffW(full.data(), static_cast<DWORD>(full.size()));
  return L"Local\\Quillmoor-" + std::to_wstring(std::hash<std::wstring>{}(full));
}

}  // namespace

FolderLock::FolderLock(const std::filesystem::path& folder) {
  const DWORD attributes = ::GetFileAttributesW(folder.empty() ? L"." : WidePath(folder).c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) RaiseLastError("cannot lock", folder);
  const HANDLE mutex = ::CreateMutexW(nullptr, FALSE, lockName(folder).c_str());
  if (!mutex) RaiseLastError("cannot lock", folder);
  // The lock of a killed process is abandoned and acquired all the same: its files are whole.
  ::WaitForSingleObject(mutex, INFINITE);
  handle_ = reinterpret_cast<std::intptr_t>(mutex);
}

FolderLock::~FolderLock() {
  const HANDLE mutex = reinterpret_cast<HANDLE>(handle_);
  ::ReleaseMutex(mutex);
  ::CloseHandle(mutex);
}

}  // namespace quillmoor
