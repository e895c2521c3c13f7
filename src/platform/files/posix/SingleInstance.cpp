// A lock on a file: a process number left in a file would be another program's after a crash.
#include "platform/files/SingleInstance.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <filesystem>

#include "platform/files/PrivateFile.h"
#include "platform/system/posix/UserFolders.h"

namespace quillmoor {

SingleInstance::SingleInstance(Lock lock) {
  try {
    const std::filesystem::path folder = UserConfigurationFolder() / "quillmoor";
    MakePrivateFolder(folder);
    handle_ = ::open((folder / (lock == Lock::run ? "backup.lock" : "running.lock")).c_str(),
                     O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  } catch (const std::exception&) {
    return;  // no folder for the lock file
  }
  if (handle_ < 0) return;
  another_ = ::flock(static_cast<int>(handle_), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

SingleInstance::~SingleInstance() {
  if (handle_ >= 0) ::close(static_cast<int>(handle_));
}

}  // namespace quillmoor
