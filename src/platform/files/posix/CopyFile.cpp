#include "platform/files/CopyFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <vector>

#include "platform/files/posix/Descriptor.h"

namespace quillmoor {
namespace {

constexpr std::size_t kAtOnce = std::size_t{4} << 20;

bool sameTime(const timespec& a, const timespec& b) {
  return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

/// One step of the copy: bytes moved, 0 at the end of the file, -1 with errno set.
ssize_t moveBytes(int from, int to, std::vector<char>& buffer) {
  if (buffer.empty()) {
    const ssize_t moved = ::copy_file_range(from, nullptr, to, nullptr, kAtOnce, 0);
    // Not every pair of file systems can copy this way, and some report a false end of the file. Reading and
    // writing then shows the real error.
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
  std::vector<char> buffer;  // used where the system cannot copy by itself
  for (;;) {
    if (ended) RaiseError("stopped copying", source, ECANCELED);
    const ssize_t moved = moveBytes(from, to, buffer);
    if (moved == 0) return;
    if (moved < 0 && errno != EINTR) RaiseError("cannot write", target);
  }
}

}  // namespace

void CopyFileTo(const std::string& temporary, const std::string& from, const std::atomic<bool>& ended) {
  // O_NONBLOCK: a named pipe in the file's place must not hold the run up.
  const Descriptor source(::open(from.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat before {};
  if (!source || ::fstat(source.get(), &before) != 0) RaiseError("cannot read", from);
  if (!S_ISREG(before.st_mode)) RaiseError("not a file:", from, EISDIR);
  const mode_t mode = before.st_mode & 0777;
  Descriptor target(::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
  if (!target) RaiseError("cannot create", temporary);
  copyContents(source.get(), target.get(), from, temporary, ended);

  struct stat after {};
  struct stat copy {};
  if (::fstat(source.get(), &after) != 0 || ::fstat(target.get(), &copy) != 0) {
    RaiseError("cannot read", temporary);
  }
  const bool same = after.st_size == before.st_size && sameTime(after.st_mtim, before.st_mtim);
  if (!same || copy.st_size != before.st_size) RaiseError("changed while being copied:", from, EIO);
  const timespec times[2] = {before.st_atim, before.st_mtim};
  // Some shares do not let the client set times; the copy is whole all the same.
  if (::futimens(target.get(), times) != 0 && errno != EPERM) RaiseError("cannot set the time of", temporary);
  // A share may report only now what it could not write.
  if (::close(target.release()) != 0) RaiseError("cannot write", temporary);
}

}  // namespace quillmoor
