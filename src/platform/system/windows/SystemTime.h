// The system's times: FILETIME counts 100 ns from 1601 on, and a zone's rules turn UTC into local time.
#pragma once

#include <windows.h>

#include <chrono>

#include "platform/system/LocalTime.h"

namespace quillmoor {

/// To the second. Times before 1601 become its first moment.
FILETIME ToFileTime(std::chrono::sys_seconds time);
std::chrono::sys_seconds FromFileTime(const FILETIME& time);

/// As the functions of platform/system/LocalTime.h, by the rules given in place of the machine's own.
std::chrono::sys_seconds LocalToUtc(LocalDateTime time, const TIME_ZONE_INFORMATION& rules);
LocalDateTime UtcToLocal(std::chrono::sys_seconds time, const TIME_ZONE_INFORMATION& rules);

}  // namespace quillmoor
