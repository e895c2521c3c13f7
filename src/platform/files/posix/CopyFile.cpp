#include "platform/files/CopyFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>
#include <vector>

namespace quillmoor {
namespace {

constexpr std::size_t kAtOnce = std::size_t{4} << 20;

[[noreturn]] void fail(int error, const char* what, const std::string& path) {
  throw std::system_error(error, std::generic_category(), what + path);
}

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int number() const { return number_; }
  /// The error of closing it, which is the last word on what was written over a network.
  int close() { return ::close(std::exchange(number_, -1)) == 0 ? 0 : errno; }

 private:
  int number_;
};

bool sameTime(const timespec& a, const timespec& b) {
  return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

/// One step of the copy: bytes moved, 0 at the end of the file, -1 with errno set.
ssize_t moveBytes(int from, int to, std::vector<char>& buffer) {
  if (buffer.empty()) {
    const ssize_t moved = ::copy_file_range(from, nullptr, to, nullptr, kAtOnce, 0);
    // The two file systems may not be able to do it between them, and some report an end that is none. What
    // the error is all about shows when the bytes go through here.
    if (moved > 0 || (moved < 0 && (errno == EINTR || errno == ENOSPC || errno == EDQUOT))) return moved;
    buffer.resize(kAtOnce);
  }
  const ssize_t got = ::read(from, buffer.data(), buffer.size());
  for (ssize_t written = 0; written < got;) {
    const ssize_t step = ::write(to, buffer.data() + written, static_cast<std::size_t>(got - written));
    if (step < 0 && errno != EINTR) return -1;
    if (step > 0) written += step;
  }
  return got;
}

void copyContents(int from, int to, const std::string& source, const std::string& target,
                  const std::atomic<bool>& ended) {
  std::vector<char> buffer;  // in use where the system cannot copy by itself
  for (;;) {
    if (ended) fail(ECANCELED, "ended the copy of ", source);
    const ssize_t moved = moveBytes(from, to, buffer);
    if (moved == 0) return;
    if (moved < 0 && errno != EINTR) fail(errno, "cannot write ", target);
  }
}

}  // namespace

void CopyFileTo(const std::string& temporary, const std::string& from, const std::atomic<bool>& ended) {
  // O_NONBLOCK: a named pipe that lies there must not hold the run up.
  const Descriptor source(::open(from.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat before {};
  if (source.number() < 0 || ::fstat(source.number(), &before) != 0) fail(errno, "cannot read ", from);
  if (!S_ISREG(before.st_mode)) fail(EISDIR, "no file: ", from);
  const mode_t mode = before.st_mode & 0777;
  Descriptor target(::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
  if (target.number() < 0) fail(errno, "cannot create ", temporary);
  copyContents(source.number(), target.number(), from, temporary, ended);

  struct stat after {};
  struct stat copy {};
  if (::fstat(source.number(), &after) != 0 || ::fstat(target.number(), &copy) != 0) {
    fail(errno, "cannot read ", temporary);
  }
  const bool same = after.st_size == before.st_size && sameTime(after.st_mtim, before.st_mtim);
  if (!same || copy.st_size != before.st_size) fail(EIO, "changed while it was copied: ", from);
  const timespec times[2] = {before.st_atim, before.st_mtim};
  // Some network folders set times by themselves alone; what they hold is whole all the same.
  if (::futimens(target.number(), times) != 0 && errno != EPERM)
    fail(errno, "cannot set the time of ", temporary);
  if (const int error = target.close()) fail(error, "cannot write ", temporary);
}

}  // namespace quillmoor
