// flock on a file in the folder: the system releases it with the process, and carries it to the server of an
// NFS or CIFS share. A lock on the folder itself would not reach there.
#include "platform/files/TargetLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <system_error>
#include <utility>

#include "platform/files/ReservedNames.h"

namespace quillmoor {
namespace {

/// How often a lock file may vanish between the steps of an attempt: each time its owner has just removed it.
constexpr int kMostAttempts = 1000;

std::string lockFile(const std::string& folder) {
  return folder + "/" + kLockFileName;
}

/// Keeps the folder's time of last change over what is done in its lifetime.
class FolderTime {
 public:
  explicit FolderTime(const std::string& folder) : folder_(folder) {
    known_ = ::stat(folder.c_str(), &before_) == 0;
  }
  ~FolderTime() {
    const int error = errno;  // the caller's
    const timespec times[2] = {{0, UTIME_OMIT}, before_.st_mtim};
    if (known_) ::utimensat(AT_FDCWD, folder_.c_str(), times, 0);
    errno = error;
  }
  FolderTime(const FolderTime&) = delete;
  FolderTime& operator=(const FolderTime&) = delete;

 private:
  const std::string& folder_;
  struct stat before_ {};
  bool known_;
};

/// The lock file, created if it is not there; -1 with errno set.
int openLockFile(const std::string& folder, const std::string& path) {
  constexpr int kFlags = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
  int file = ::open(path.c_str(), O_RDWR | kFlags);
  // One that another user's killed process has left: a local disk locks what can only be read, too.
  if (file < 0 && (errno == EACCES || errno == EPERM || errno == EROFS))
    file = ::open(path.c_str(), O_RDONLY | kFlags);
  if (file >= 0 || errno != ENOENT) return file;
  const FolderTime keepTime(folder);
  file = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | kFlags, 0666);
  // Whatever the umask, so that every user who may write in the folder can take the file over.
  if (file >= 0) ::fchmod(file, 0666);
  return file;
}

/// True when locked, false when somebody else holds it, nothing where there are no locks.
std::optional<bool> lock(int file) {
  int result = 0;
  while ((result = ::flock(file, LOCK_EX | LOCK_NB)) != 0 && errno == EINTR) {
  }
  if (result == 0) return true;
  if (errno == EWOULDBLOCK || errno == EACCES) return false;  // EACCES: a share that emulates flock
  return std::nullopt;
}

}  // namespace

std::unique_ptr<TargetLock> TargetLock::acquire(const std::string& folder) {
  const std::string path = lockFile(folder);
  for (int attempt = 1;; ++attempt) {
    const int file = openLockFile(folder, path);
    const int error = errno;
    // A share whose server refuses to open a file that a Windows machine has open by itself.
    if (file < 0 && (error == EBUSY || error == ETXTBSY)) return nullptr;
    if (file < 0) {
      const bool createdMeanwhile = error == EEXIST;
      if (createdMeanwhile && attempt < kMostAttempts) continue;
      throw std::system_error(error, std::generic_category(), "cannot open " + path);
    }
    const std::optional<bool> locked = lock(file);
    struct stat opened {
    }, named{};
    const bool regular = ::fstat(file, &opened) == 0 && S_ISREG(opened.st_mode);
    // The former owner may have removed the file after it was opened here: then it keeps nobody away.
    const bool same =
        ::lstat(path.c_str(), &named) == 0 && named.st_dev == opened.st_dev && named.st_ino == opened.st_ino;
    if (regular && same && locked != false)
      return std::unique_ptr<TargetLock>(new TargetLock(folder, file, locked.has_value()));
    ::close(file);
    if (!regular)
      throw std::system_error(std::make_error_code(std::errc::file_exists), "this is no lock file: " + path);
    if (locked == false) return nullptr;
    if (attempt == kMostAttempts)
      throw std::system_error(std::make_error_code(std::errc::device_or_resource_busy),
                              "cannot lock " + path);
  }
}

TargetLock::TargetLock(std::string folder, std::intptr_t handle, bool enforced)
    : folder_(std::move(folder)), handle_(handle), enforced_(enforced) {}

TargetLock::~TargetLock() {
  {
    const FolderTime keepTime(folder_);
    ::unlink(lockFile(folder_).c_str());  // while it is locked: nobody else takes it for theirs
  }
  ::close(static_cast<int>(handle_));
}

}  // namespace quillmoor
