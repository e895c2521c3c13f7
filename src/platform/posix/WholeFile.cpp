#include "platform/WholeFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace quillmoor {
namespace {

[[noreturn]] void fail(const char* what, const std::filesystem::path& path) {
  throw std::system_error(errno, std::generic_category(), std::string(what) + " " + path.string());
}

}  // namespace

std::filesystem::path WholeFile::temporaryName(const std::filesystem::path& folder) {
  return folder / ".quillmoor-unfinished.tmp";
}

WholeFile::WholeFile(std::filesystem::path target, Survives survives, Readers readers)
    : target_(std::move(target)), survives_(survives), readers_(readers) {
  mode_t mode = 0666;  // the user's umask decides
  bool keepMode = false;
  if (readers == Readers::owner) {
    std::error_code ignored;
    if (std::filesystem::is_symlink(target_, ignored)) target_ = std::filesystem::weakly_canonical(target_);
    struct stat before {};
    keepMode = ::stat(target_.c_str(), &before) == 0;
    mode = keepMode ? before.st_mode & 07777 : 0600;
  }
  temporary_ = temporaryName(target_.parent_path());
  // A file that is itself called like the temporary one must not be renamed onto itself half written.
  if (temporary_ == target_) temporary_ += "2";
  // O_NOFOLLOW: a link planted under the temporary name must not lead the bytes elsewhere.
  const int flags = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW;
  handle_ = ::open(temporary_.c_str(), flags, mode);
  if (handle_ < 0) fail("cannot create", temporary_);
  // One that a killed program left behind has permissions of its own.
  if (readers == Readers::owner) ::fchmod(static_cast<int>(handle_), mode);
}

WholeFile::~WholeFile() {
  if (handle_ < 0) return;
  ::close(static_cast<int>(handle_));
  ::unlink(temporary_.c_str());
}

void WholeFile::write(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(static_cast<int>(handle_), bytes.data(), bytes.size());
    if (written < 0) {
      if (errno == EINTR) continue;
      fail("cannot write", temporary_);
    }
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
}

void WholeFile::commit() {
  const int descriptor = static_cast<int>(handle_);
  if (survives_ == Survives::power && ::fsync(descriptor) != 0) fail("cannot flush", temporary_);
  handle_ = -1;
  if (::close(descriptor) != 0 || ::rename(temporary_.c_str(), target_.c_str()) != 0) {
    const int error = errno;
    ::unlink(temporary_.c_str());
    errno = error;
    fail("cannot write", target_);
  }
}

}  // namespace quillmoor
