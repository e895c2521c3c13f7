#include "platform/files/TemporaryFile.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <memory>
#include <system_error>
#include <utility>

#include "platform/files/ReservedNames.h"

namespace quillmoor {
namespace {

constexpr std::time_t kLongSeconds = 24 * 60 * 60;
constexpr int kMostAttempts = 1000;

[[noreturn]] void fail(const char* what, const std::string& path, int error = errno) {
  throw std::system_error(error, std::generic_category(), std::string(what) + " " + path);
}

bool isLongAgo(const struct stat& status) {
  return std::time(nullptr) - status.st_mtime > kLongSeconds;
}

int lockWithoutWaiting(int file) {
  int result = 0;
  while ((result = ::flock(file, LOCK_EX | LOCK_NB)) != 0 && errno == EINTR) {
  }
  return result;
}

/// Whether a write that was accepted cannot fail when the file is closed, as it can on a share.
/// Only the usual file systems of disks are known to be so.
bool closeCannotFail(int file) {
  constexpr decltype(statfs::f_type) kXfs = 0x58465342;
  struct statfs status {};
  if (::fstatfs(file, &status) != 0) return false;
  return status.f_type == EXT4_SUPER_MAGIC || status.f_type == kXfs || status.f_type == TMPFS_MAGIC ||
         status.f_type == BTRFS_SUPER_MAGIC;
}

/// Locks a file just created. False when a sweep got hold of it before, which then removes it.
bool claim(int file) {
  // Where there are no locks, only the file's age keeps a sweep away.
  if (lockWithoutWaiting(file) != 0) return errno != EWOULDBLOCK && errno != EACCES;
  struct stat status {};
  return ::fstat(file, &status) != 0 || status.st_nlink > 0;
}

}  // namespace

TemporaryFile::TemporaryFile(const std::string& folder, unsigned permissions) {
  for (int attempt = 1;; ++attempt) {
    path_ = folder + NewTemporaryName();
    const int file = ::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, permissions);
    if (file >= 0 && claim(file)) {
      handle_ = file;
      return;
    }
    const int error = file >= 0 ? EEXIST : errno;
    if (file >= 0) ::close(file);
    if (error != EEXIST || attempt == kMostAttempts) fail("cannot create", path_, error);
  }
}

TemporaryFile::~TemporaryFile() {
  if (!renamed_) ::unlink(path_.c_str());  // while it is locked
  if (handle_ >= 0) ::close(static_cast<int>(handle_));
}

void TemporaryFile::write(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(static_cast<int>(handle_), bytes.data(), bytes.size());
    if (written < 0) {
      if (errno == EINTR) continue;
      fail("cannot write", path_);
    }
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
}

void TemporaryFile::flushToDisk() {
  if (::fsync(static_cast<int>(handle_)) != 0) fail("cannot flush", path_);
}

/// The system reports at every close of the file what it could not write; the lock stays with the last.
void TemporaryFile::finishWriting() {
  if (!std::exchange(writing_, false)) return;
  if (closeCannotFail(static_cast<int>(handle_))) return;
  const int other = ::fcntl(static_cast<int>(handle_), F_DUPFD_CLOEXEC, 0);
  if (other < 0 || ::close(other) != 0) fail("cannot write", path_);
}

void TemporaryFile::renameTo(const std::string& target, Renaming how) {
  finishWriting();
  struct stat former {};
  if (how.keepPermissions && ::stat(target.c_str(), &former) == 0)
    ::fchmod(static_cast<int>(handle_), former.st_mode & 07777);
  if (::rename(path_.c_str(), target.c_str()) != 0) fail("cannot write", target);
  renamed_ = true;
  ::close(static_cast<int>(std::exchange(handle_, -1)));
}

std::vector<std::string> ReservedNamesIn(const std::string& folder) {
  std::vector<std::string> names;
  struct Close {
    void operator()(DIR* stream) const { ::closedir(stream); }
  };
  const std::unique_ptr<DIR, Close> stream(::opendir(folder.empty() ? "." : folder.c_str()));
  while (const dirent* const entry = stream ? ::readdir(stream.get()) : nullptr) {
    if (entry->d_name[0] == '.' && IsReservedLocalName(entry->d_name)) names.emplace_back(entry->d_name);
  }
  return names;
}

void RemoveUnheldFile(const std::string& path) {
  struct stat named {
  }, opened{};
  if (::lstat(path.c_str(), &named) != 0 || !S_ISREG(named.st_mode)) return;
  constexpr int kFlags = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
  int file = ::open(path.c_str(), O_RDWR | kFlags);  // a share locks only what can be written
  if (file < 0) file = ::open(path.c_str(), O_RDONLY | kFlags);
  const bool locked = file >= 0 && lockWithoutWaiting(file) == 0;
  const bool held = file >= 0 && !locked && (errno == EWOULDBLOCK || errno == EACCES);
  // The name may have gone to another file meanwhile.
  const bool same = file < 0 || (::fstat(file, &opened) == 0 && opened.st_ino == named.st_ino &&
                                 opened.st_dev == named.st_dev);
  if (same && !held && (locked || isLongAgo(named))) ::unlink(path.c_str());
  if (file >= 0) ::close(file);
}

bool IsLongUnchanged(const std::string& path) {
  struct stat status {};
  return ::lstat(path.c_str(), &status) == 0 && isLongAgo(status);
}

}  // namespace quillmoor
