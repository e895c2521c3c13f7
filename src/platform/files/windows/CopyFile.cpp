#include "platform/files/CopyFile.h"

#include "platform/files/Files.h"
#include "platform/files/windows/RaiseError.h"
#include "platform/system/windows/WideText.h"
#include "platform/system/windows/WindowsApi.h"

namespace quillmoor {
namespace {

FileState stateOf(const std::string& path) {
  return InputFile(path, true).state();
}

DWORD CALLBACK checkEnded(LARGE_INTEGER, LARGE_INTEGER, LARGE_INTEGER, LARGE_INTEGER, DWORD, DWORD, HANDLE,
                          HANDLE, LPVOID ended) {
  return *static_cast<const std::atomic<bool>*>(ended) ? PROGRESS_CANCEL : PROGRESS_CONTINUE;
}

}  // namespace

void CopyFileTo(const std::string& temporary, const std::string& from, const std::atomic<bool>& ended) {
  if (folderExists(from)) RaiseError("not a file:", from, ERROR_DIRECTORY);
  const FileState before = stateOf(from);
  const BOOL copied =
      ::CopyFileExW(WidePath(from).c_str(), WidePath(temporary).c_str(), checkEnded,
                    const_cast<std::atomic<bool>*>(&ended), nullptr, COPY_FILE_FAIL_IF_EXISTS);
  const DWORD error = ::GetLastError();
  if (ended)
    throw std::system_error(std::make_error_code(std::errc::operation_canceled), "stopped copying " + from);
  if (copied == FALSE) RaiseError("cannot write", temporary, error);
  if (stateOf(from) != before || stateOf(temporary).size != before.size)
    RaiseError("changed while being copied:", from, ERROR_FILE_INVALID);
}

}  // namespace quillmoor
