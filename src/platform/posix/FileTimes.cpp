#include "platform/FileTimes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillmoor {
namespace {

/// O_NONBLOCK: a named pipe that lies there must not hold the run up.
class Descriptor {
 public:
  Descriptor(const std::string& path, int flags)
      : number_(::open(path.c_str(), flags | O_CLOEXEC | O_NONBLOCK)) {}
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int number() const { return number_; }

 private:
  int number_;
};

std::chrono::sys_seconds seconds(const timespec& time) {
  return std::chrono::sys_seconds(std::chrono::seconds(time.tv_sec));
}

}  // namespace

std::optional<FileTimes> ReadFileTimes(const std::string& path) {
  const Descriptor file(path, O_RDONLY);
  struct stat status {};
  if (file.number() < 0 || ::fstat(file.number(), &status) != 0 || S_ISDIR(status.st_mode))
    return std::nullopt;
  return FileTimes{seconds(status.st_ctim), seconds(status.st_atim), seconds(status.st_mtim)};
}

bool WriteModifiedTime(const std::string& path, std::chrono::sys_seconds modified) {
  const Descriptor file(path, O_WRONLY);
  if (file.number() < 0) return false;
  const timespec times[2] = {{0, UTIME_OMIT}, {static_cast<time_t>(modified.time_since_epoch().count()), 0}};
  return ::futimens(file.number(), times) == 0;
}

}  // namespace quillmoor
