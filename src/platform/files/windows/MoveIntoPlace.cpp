#include "platform/files/windows/MoveIntoPlace.h"

#include <windows.h>

namespace quillmoor {
namespace {

constexpr int kTries = 26;
constexpr DWORD kRestMs = 20;

/// Access is denied for good to the place of a folder or of a file that may not be written.
bool mayPass(DWORD error, const std::wstring& to) {
  if (error == ERROR_SHARING_VIOLATION) return true;
  if (error != ERROR_ACCESS_DENIED) return false;
  const DWORD attributes = ::GetFileAttributesW(to.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES &&
         (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY)) == 0;
}

}  // namespace

bool MoveIntoPlace(const std::wstring& from, const std::wstring& to, bool flush) {
  const DWORD flags = MOVEFILE_REPLACE_EXISTING | (flush ? DWORD{MOVEFILE_WRITE_THROUGH} : 0);
  for (int tries = 1;; ++tries) {
    if (::MoveFileExW(from.c_str(), to.c_str(), flags) != FALSE) return true;
    const DWORD error = ::GetLastError();
    if (tries == kTries || !mayPass(error, to)) {
      ::SetLastError(error);
      return false;
    }
    ::Sleep(kRestMs);
  }
}

}  // namespace quillmoor
