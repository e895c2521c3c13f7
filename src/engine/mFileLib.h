// Dates of local files, as the tree walk reads and sets them.
#pragma once

#include <string>

#include "platform/system/LocalTime.h"

namespace quillmoor {

/// Local times when read with `toLocal`, else UTC.
struct FileDates {
  LocalDateTime created, accessed, modified;
};

/// FALSE on success, TRUE on failure, and then the dates are left as they were: the inverted sense is given.
bool GetFileDates(const std::string& path, FileDates& dates, bool toLocal);

/// Sets the modification time, read as local time with `fromLocal`, else as UTC. FALSE on success, TRUE on
/// failure: the inverted sense is given. Fails on a folder.
bool SetFileModifiedTime(const std::string& path, LocalDateTime date, bool fromLocal);

}  // namespace quillmoor
