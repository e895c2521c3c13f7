#include "platform/LocalTime.h"

#include <ctime>

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

std::chrono::sys_seconds LocalToUtc(LocalDateTime time) {
  const LocalDateTimeParts parts = SplitLocalDateTime(time);
  std::tm broken{};
  broken.tm_year = parts.year - 1900;
  broken.tm_mon = parts.month - 1;
  broken.tm_mday = parts.day;
  broken.tm_hour = parts.hour;
  broken.tm_min = parts.minute;
  broken.tm_sec = parts.second;
  broken.tm_isdst = -1;
  return std::chrono::sys_seconds(std::chrono::seconds(std::mktime(&broken)));
}

LocalDateTime UtcToLocal(std::chrono::sys_seconds time) {
  ::tzset();  // localtime_r need not: a machine that travels would keep the zone the program began in
  const std::time_t seconds = time.time_since_epoch().count();
  std::tm broken{};
  if (!::localtime_r(&seconds, &broken)) return LocalDateTime(time.time_since_epoch());
  return LocalDateTime(time.time_since_epoch() + std::chrono::seconds(broken.tm_gmtoff));
}

std::int64_t TickCountMs() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(
             std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

}  // namespace quillmoor
