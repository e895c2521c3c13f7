// Reads and sets the dates of local files for the tree walk.
#pragma once

#include <string>

#include "platform/system/LocalTime.h"

namespace quillmoor {

/// Local times if read with `toLocal`, else UTC.
struct FileDates {
  LocalDateTime created, accessed, modified;
};

/// Deliberate: false on success, true on failure, which leaves `dates` unchanged.
bool GetFileDates(const std::string& path, FileDates& dates, bool toLocal);

/// Sets the modification time; `date` is local time with `fromLocal`, else UTC. Deliberate: false on success,
/// true on failure. Fails on a folder.
bool SetFileModifiedTime(const std::string& path, LocalDateTime date, bool fromLocal);

}  // namespace quillmoor
