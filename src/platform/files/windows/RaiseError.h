// Errors of calls that take a path.
#pragma once

#include <windows.h>

#include <string>

#include "platform/files/LocalPath.h"
#include "platform/system/windows/SystemError.h"

namespace quillmoor {

/// As RaiseLastError, for the path that a text names.
[[noreturn]] inline void RaiseError(const char* what, const std::string& path,
                                    DWORD error = ::GetLastError()) {
  ::SetLastError(error);
  RaiseLastError(what, LocalPath(path));
}

}  // namespace quillmoor
