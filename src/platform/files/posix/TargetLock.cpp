// flock on a file in the folder: the system releases it with the process, and passes it on to the server of
// an NFS or CIFS share. A lock on the folder itself would not reach the server.
#include "platform/files/TargetLock.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <optional>

#include "platform/files/ReservedNames.h"
#include "platform/files/posix/Descriptor.h"

namespace quillmoor {
namespace {

/// How often the owner of a lock file may remove it between two steps of an attempt.
constexpr int kMostAttempts = 1000;

std::string lockFile(const std::string& folder) {
  return folder + "/" + kLockFileName;
}

/// Restores the folder's time of last change at the end of its life.
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
  // Left by another user's killed process: on a local disk a file that can only be read can be locked, too.
  if (file < 0 && (errno == EACCES || errno == EPERM || errno == EROFS))
    file = ::open(path.c_str(), O_RDONLY | kFlags);
  if (file >= 0 || errno != ENOENT) return file;
  const FolderTime keepTime(folder);
  file = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | kFlags, 0666);
  // Regardless of the umask, so that every user who may write in the folder can take the file over.
  if (file >= 0) ::fchmod(file, 0666);
  return file;
}

/// True when locked, false when another process holds it, nothing where there are no locks.
std::optional<bool> lock(int file) {
  if (LockFile(file, LOCK_EX | LOCK_NB) == 0) return true;
  if (errno == EWOULDBLOCK || errno == EACCES) return false;  // EACCES: on a share that emulates flock
  return std::nullopt;
}

}  // namespace

std::unique_ptr<TargetLock> TargetLock::acquire(const std::string& folder) {
  const std::string path = lockFile(folder);
  for (int attempt = 1;; ++attempt) {
    Descriptor file(openLockFile(folder, path));
    // On a share, whose server does not open a file that a Windows machine has opened without sharing.
    if (!file && (errno == EBUSY || errno == ETXTBSY)) return nullptr;
    const bool createdMeanwhile = !file && errno == EEXIST;
    if (createdMeanwhile && attempt < kMostAttempts) continue;
    if (!file) RaiseError("cannot open", path);
    const std::optional<bool> locked = lock(file.get());
    struct stat opened {
    }, named{};
    if (::fstat(file.get(), &opened) != 0 || !S_ISREG(opened.st_mode))
      throw std::system_error(std::make_error_code(std::errc::file_exists), "not a lock file: " + path);
    // The former owner may have removed the file after it was opened here: then it excludes nobody.
    const bool same =
        ::lstat(path.c_str(), &named) == 0 && named.st_dev == opened.st_dev && named.st_ino == opened.st_ino;
    if (same && locked != false)
      return std::unique_ptr<TargetLock>(new TargetLock(folder, file.release(), locked.has_value()));
    if (locked == false) return nullptr;
    if (attempt == kMostAttempts) RaiseError("cannot lock", path, EBUSY);
  }
}

TargetLock::TargetLock(std::string folder, std::intptr_t handle, bool enforced)
    : folder_(std::move(folder)), handle_(handle), enforced_(enforced) {}

TargetLock::~TargetLock() {
  {
    const FolderTime keepTime(folder_);
    ::unlink(lockFile(folder_).c_str());  // while it is locked, so that no other process opens it
  }
  ::close(static_cast<int>(handle_));
}

}  // namespace quillmoor
