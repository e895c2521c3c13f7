#include "platform/posix/FolderLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace quillmoor {

FolderLock::FolderLock(const std::filesystem::path& folder)
    : number_(::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  int locked = -1;
  while (number_ >= 0 && (locked = ::flock(number_, LOCK_EX)) != 0 && errno == EINTR) {
  }
  if (locked == 0) return;
  const int reason = errno;
  if (number_ >= 0) ::close(number_);
  throw std::system_error(reason, std::generic_category(), "cannot lock " + folder.string());
}

FolderLock::~FolderLock() {
  ::close(number_);
}

}  // namespace quillmoor
