// The calendar and clocks, the same on every system.
#include "platform/system/LocalTime.h"

namespace quillmoor {

LocalDateTime LocalNow() {
  return UtcToLocal(std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()));
}

LocalDateTimeParts SplitLocalDateTime(LocalDateTime time) {
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(time - day);
  return {static_cast<int>(date.year()),
          static_cast<int>(static_cast<unsigned>(date.month())),
          static_cast<int>(static_cast<unsigned>(date.day())),
          static_cast<int>(clock.hours().count()),
          static_cast<int>(clock.minutes().count()),
          static_cast<int>(clock.seconds().count()),
          static_cast<int>(std::chrono::weekday(day).c_encoding()) + 1};
}

std::optional<LocalDateTime> MakeLocalDateTime(const LocalDateTimeParts& parts) {
  if (parts.year < 1 || parts.year > 9999 || parts.month < 1 || parts.month > 12 || parts.day < 1 ||
      parts.day > 31 || parts.hour < 0 || parts.hour > 23 || parts.minute < 0 || parts.minute > 59 ||
      parts.second < 0 || parts.second > 59) {
    return std::nullopt;
  }
  const std::chrono::year_month_day date{std::chrono::year(parts.year),
                                         std::chrono::month(static_cast<unsigned>(parts.month)),
                                         std::chrono::day(static_cast<unsigned>(parts.day))};
  if (!date.ok()) return std::nullopt;
  return std::chrono::local_days(date) + std::chrono::hours(parts.hour) + std::chrono::minutes(parts.minute) +
         std::chrono::seconds(parts.second);
}

std::int64_t TickCountMs() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(
             std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

}  // namespace quillmoor
