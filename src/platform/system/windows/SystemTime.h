// The system's time types: FILETIME counts 100 ns units from 1601; a zone's rules convert UTC to local time.
#pragma once

#include <windows.h>

#include <chrono>

#include "platform/system/LocalTime.h"

namespace quillmoor {

/// To the second. Times before 1601 become its start.
FILETIME ToFileTime(std::chrono::sys_seconds time);
std::chrono::sys_seconds FromFileTime(const FILETIME& time);

/// As the functions of platform/system/LocalTime.h, with the given rules instead of the machine's.
std::chrono::sys_seconds LocalToUtc(LocalDateTime time, const TIME_ZONE_INFORMATION& rules);
LocalDateTime UtcToLocal(std::chrono::sys_seconds time, const TIME_ZONE_INFORMATION& rules);

}  // namespace quillmoor
