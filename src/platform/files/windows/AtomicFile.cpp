// An open file needs no other lock: a sweep opens it without sharing, which fails.
#include "platform/files/AtomicFile.h"

#include "platform/files/windows/RaiseError.h"
#include "platform/system/windows/Handle.h"
#include "platform/system/windows/WideText.h"
#include "platform/system/windows/WindowsApi.h"

namespace quillmoor {
namespace {

HANDLE handleOf(std::intptr_t number) {
  return reinterpret_cast<HANDLE>(number);
}

}  // namespace

bool AtomicFile::create() {
  const HANDLE file =
      ::CreateFileW(WidePath(path_).c_str(), GENERIC_WRITE | DELETE, FILE_SHARE_READ | FILE_SHARE_DELETE,
                    nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
  handle_ = reinterpret_cast<std::intptr_t>(file);
  if (handle_ == kNone && ::GetLastError() != ERROR_FILE_EXISTS) RaiseError("cannot create", path_);
  return handle_ != kNone;
}

/// A handle that has written sets the file's time once more when it is closed. One that only reads replaces
/// it, so that the file stays open all the time.
void AtomicFile::finishWriting() {
  if (!std::exchange(writing_, false)) return;
  const HANDLE hold = ::CreateFileW(WidePath(path_).c_str(), GENERIC_READ,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
  if (hold == INVALID_HANDLE_VALUE) RaiseError("cannot write", path_);
  ::CloseHandle(handleOf(std::exchange(handle_, reinterpret_cast<std::intptr_t>(hold))));
}

void AtomicFile::commit() {
  const bool power = survives_ == Survives::power;
  if (power && ::FlushFileBuffers(handleOf(handle_)) == FALSE) RaiseError("cannot flush", path_);
  // ReplaceFile keeps the old file's permissions and attributes, at the cost of a dozen more system calls,
  // and needs the new one closed. It may fail halfway, with no file left under the name: then, as after any
  // failure of it, the plain move follows.
  const bool keepPermissions = readers_ == Readers::owner && pathExists(target_);
  if (keepPermissions) ::CloseHandle(handleOf(std::exchange(handle_, kNone)));
  renamed_ = keepPermissions && ::ReplaceFileW(WidePath(target_).c_str(), WidePath(path_).c_str(), nullptr,
                                               REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr, nullptr) != FALSE;
  try {
    if (!renamed_) renameFile(path_, target_, power);
    renamed_ = true;
  } catch (const std::system_error&) {
    // When the old file is gone, the new one under its temporary name is all that is left: it stays.
    renamed_ = keepPermissions && !pathExists(target_);
    throw;
  }
  if (handle_ != kNone) ::CloseHandle(handleOf(std::exchange(handle_, kNone)));
}

void RemoveUnheldFile(const std::string& path) {
  const Handle removed(::CreateFileW(WidePath(path).c_str(), DELETE, 0, nullptr, OPEN_EXISTING,
                                     FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
}

}  // namespace quillmoor
