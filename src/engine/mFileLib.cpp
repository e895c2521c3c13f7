#include "engine/mFileLib.h"

#include "platform/files/Files.h"

namespace quillmoor {

bool GetFileDates(const std::string& path, FileDates& dates, bool toLocal) {
  const auto times = fileTimes(path);
  if (!times) return true;
  const auto convert = [toLocal](std::chrono::sys_seconds time) {
    return toLocal ? UtcToLocal(time) : LocalDateTime(time.time_since_epoch());
  };
  dates = {convert(times->created), convert(times->accessed), convert(times->modified)};
  return false;
}

bool SetFileModifiedTime(const std::string& path, LocalDateTime date, bool fromLocal) {
  return !setModifiedTime(path,
                          fromLocal ? LocalToUtc(date) : std::chrono::sys_seconds(date.time_since_epoch()));
}

}  // namespace quillmoor
