#include "platform/files/FolderLock.h"

#include <fcntl.h>

#include "platform/files/posix/Descriptor.h"

namespace quillmoor {

FolderLock::FolderLock(const std::filesystem::path& folder) {
  Descriptor opened(::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!opened || LockFile(opened.get(), LOCK_EX) != 0) RaiseError("cannot lock", folder.string());
  handle_ = opened.release();
}

FolderLock::~FolderLock() {
  ::close(static_cast<int>(handle_));
}

}  // namespace quillmoor
