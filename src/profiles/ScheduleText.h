// The schedule and the clock in words, side by side in the settings.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "platform/system/LocalTime.h"

namespace quillmoor {

/// 1 = Sunday .. 7 = Saturday.
inline constexpr std::array<const char*, 8> kWeekdayNames = {"",          "Sunday",   "Monday", "Tuesday",
                                                             "Wednesday", "Thursday", "Friday", "Saturday"};

/// "Every Monday and Thursday at 12:30", "Never: no weekday is selected". Flags 1 = Sunday .. 7 = Saturday;
/// only the value 1 selects a day.
std::string ScheduleText(const std::array<std::int32_t, 8>& days, std::int32_t hour, std::int32_t minute);

/// "03:05:09 PM"
std::string ClockText(LocalDateTime time);

}  // namespace quillmoor
