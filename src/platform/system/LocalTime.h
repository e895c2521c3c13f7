// Local date-times, as used by listings, logs and the scheduler, and their conversion to and from UTC.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace quillmoor {

/// A date and time of day in the machine's time zone, to the second. Carries no time zone.
using LocalDateTime = std::chrono::local_seconds;

/// Parts of a local date-time. `weekday` 1 = Sunday .. 7 = Saturday.
struct LocalDateTimeParts {
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0, weekday = 0;
};

/// The current local time.
LocalDateTime LocalNow();

LocalDateTimeParts SplitLocalDateTime(LocalDateTime time);

/// Nullopt when the parts are not a Gregorian date or a time of day (weekday is ignored).
std::optional<LocalDateTime> MakeLocalDateTime(const LocalDateTimeParts& parts);

/// Converts by the machine's time zone rules. A local time skipped by a clock change is read by the clock
/// before the change; of two moments with the same local time either may be returned.
std::chrono::sys_seconds LocalToUtc(LocalDateTime time);
LocalDateTime UtcToLocal(std::chrono::sys_seconds time);

/// The user's locale's name for the hours before or after noon; "AM" and "PM" where it has none.
std::string DayHalfText(bool afternoon);

/// Milliseconds of a monotonic clock; its zero is arbitrary.
std::int64_t TickCountMs();

}  // namespace quillmoor
