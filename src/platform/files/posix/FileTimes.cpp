#include "platform/files/FileTimes.h"

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

std::chrono::sys_seconds seconds(const statx_timestamp& time) {
  return std::chrono::sys_seconds(std::chrono::seconds(time.tv_sec));
}

}  // namespace

std::optional<FileTimes> ReadFileTimes(const std::string& path) {
  const Descriptor file(path, O_RDONLY);
  struct statx status {};
  constexpr unsigned kWanted = STATX_BASIC_STATS | STATX_BTIME;
  if (file.number() < 0 || ::statx(file.number(), "", AT_EMPTY_PATH, kWanted, &status) != 0)
    return std::nullopt;
  if (S_ISDIR(status.stx_mode)) return std::nullopt;
  const bool hasCreated = (status.stx_mask & STATX_BTIME) != 0;
  return FileTimes{seconds(hasCreated ? status.stx_btime : status.stx_mtime), seconds(status.stx_atime),
                   seconds(status.stx_mtime)};
}

bool WriteModifiedTime(const std::string& path, std::chrono::sys_seconds modified) {
  const Descriptor file(path, O_WRONLY);
  if (file.number() < 0) return false;
  const timespec times[2] = {{0, UTIME_OMIT}, {static_cast<time_t>(modified.time_since_epoch().count()), 0}};
  return ::futimens(file.number(), times) == 0;
}

}  // namespace quillmoor
