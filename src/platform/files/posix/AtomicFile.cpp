#include "platform/files/AtomicFile.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>

#include <ctime>

#include "platform/files/posix/Descriptor.h"

namespace quillmoor {
namespace {

/// True where an accepted write cannot fail when the file is closed, as it can on a share. Only the usual
/// file systems of disks are known for that.
bool closeCannotFail(int file) {
  constexpr decltype(statfs::f_type) kXfs = 0x58465342;
  struct statfs status {};
  if (::fstatfs(file, &status) != 0) return false;
  return status.f_type == EXT4_SUPER_MAGIC || status.f_type == kXfs || status.f_type == TMPFS_MAGIC ||
         status.f_type == BTRFS_SUPER_MAGIC;
}

/// Locks a file just created. False when a sweep locked it before, which then removes it.
bool claim(int file) {
  // Where there are no locks, only the file's age protects it from a sweep.
  if (LockFile(file, LOCK_EX | LOCK_NB) != 0) return errno != EWOULDBLOCK && errno != EACCES;
  struct stat status {};
  return ::fstat(file, &status) != 0 || status.st_nlink > 0;
}

}  // namespace

bool AtomicFile::create() {
  Descriptor file(::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                         readers_ == Readers::owner ? 0600 : 0666));
  if (!file && errno != EEXIST) RaiseError("cannot create", path_);
  if (!file || !claim(file.get())) return false;
  handle_ = file.release();
  return true;
}

/// Every close of the file reports what could not be written; the lock stays until the last one.
void AtomicFile::finishWriting() {
  const int file = static_cast<int>(handle_);
  if (!std::exchange(writing_, false) || closeCannotFail(file)) return;
  const int other = ::fcntl(file, F_DUPFD_CLOEXEC, 0);
  if (other < 0 || ::close(other) != 0) RaiseError("cannot write", path_);
}

void AtomicFile::commit() {
  const int file = static_cast<int>(handle_);
  if (survives_ == Survives::power && ::fsync(file) != 0) RaiseError("cannot flush", path_);
  finishWriting();
  struct stat former {};
  if (readers_ == Readers::owner && ::stat(target_.c_str(), &former) == 0)
    ::fchmod(file, former.st_mode & 07777);
  renameFile(path_, target_);
  renamed_ = true;
  ::close(static_cast<int>(std::exchange(handle_, kNone)));
}

void RemoveUnheldFile(const std::string& path) {
  struct stat named {
  }, opened{};
  if (::lstat(path.c_str(), &named) != 0 || !S_ISREG(named.st_mode)) return;
  constexpr int kFlags = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
  int number = ::open(path.c_str(), O_RDWR | kFlags);  // a share locks only what can be written
  if (number < 0) number = ::open(path.c_str(), O_RDONLY | kFlags);
  const Descriptor file(number);
  const bool locked = file && LockFile(file.get(), LOCK_EX | LOCK_NB) == 0;
  const bool held = file && !locked && (errno == EWOULDBLOCK || errno == EACCES);
  // Another file may have the name by now.
  const bool same = !file || (::fstat(file.get(), &opened) == 0 && opened.st_ino == named.st_ino &&
                              opened.st_dev == named.st_dev);
  const bool stale = std::time(nullptr) - named.st_mtime > kStaleSeconds;
  if (same && !held && (locked || stale)) removeFile(path);
}

}  // namespace quillmoor
