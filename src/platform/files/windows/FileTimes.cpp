#include "platform/files/FileTimes.h"

#include "platform/system/windows/Handle.h"
#include "platform/system/windows/SystemTime.h"
#include "platform/system/windows/WideText.h"

namespace quillmoor {
namespace {

/// Without the flag that folders would need, they cannot be opened.
Handle openFile(const std::string& path, DWORD access) {
  return Handle(::CreateFileW(WidePath(path).c_str(), access,
                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                              FILE_ATTRIBUTE_NORMAL, nullptr));
}

}  // namespace

std::optional<FileTimes> ReadFileTimes(const std::string& path) {
  const Handle file = openFile(path, GENERIC_READ);
  FILETIME created, accessed, modified;
  if (!file || ::GetFileTime(file.get(), &created, &accessed, &modified) == FALSE) return std::nullopt;
  return FileTimes{FromFileTime(created), FromFileTime(accessed), FromFileTime(modified)};
}

bool WriteModifiedTime(const std::string& path, std::chrono::sys_seconds modified) {
  const Handle file = openFile(path, GENERIC_WRITE);
  if (!file) return false;
  const FILETIME time = ToFileTime(modified);
  return ::SetFileTime(file.get(), nullptr, nullptr, &time) != FALSE;
}

}  // namespace quillmoor
