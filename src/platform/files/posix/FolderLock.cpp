#include "platform/files/FolderLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace quillmoor {

FolderLock::FolderLock(const std::filesystem::path& folder)
    : handle_(::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  const int number = static_cast<int>(handle_);
  int locked = -1;
  while (number >= 0 && (locked = ::flock(number, LOCK_EX)) != 0 && errno == EINTR) {
  }
  if (locked == 0) return;
  const int reason = errno;
  if (number >= 0) ::close(number);
  throw std::system_error(reason, std::generic_category(), "cannot lock " + folder.string());
}

FolderLock::~FolderLock() {
  ::close(static_cast<int>(handle_));
}

}  // namespace quillmoor
