// Local date-times, as listings, logs and the scheduler use them, and their way to and from UTC.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace quillmoor {

/// A date and time of day on the machine's own clock, to the second. No time zone travels with it.
using LocalDateTime = std::chrono::local_seconds;

/// Parts of a local date-time. `weekday` 1 = Sunday .. 7 = Saturday.
struct LocalDateTimeParts {
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0, weekday = 0;
};

/// The clock now.
LocalDateTime LocalNow();

LocalDateTimeParts SplitLocalDateTime(LocalDateTime time);

/// nullopt when the parts are no date of the Gregorian calendar or no time of day (weekday is ignored).
std::optional<LocalDateTime> MakeLocalDateTime(const LocalDateTimeParts& parts);

/// By the time zone rules of the machine. A local time that was skipped by a clock change is read as the
/// moment that a clock not yet changed would show; of two moments that share a local time either may come.
std::chrono::sys_seconds LocalToUtc(LocalDateTime time);
LocalDateTime UtcToLocal(std::chrono::sys_seconds time);

/// What the user's locale calls the hours before noon, or those after it; "AM" and "PM" where it has no word
/// for them.
std::string DayHalfText(bool afternoon);

/// Milliseconds of a clock that never goes back; its zero is arbitrary.
std::int64_t TickCountMs();

}  // namespace quillmoor
