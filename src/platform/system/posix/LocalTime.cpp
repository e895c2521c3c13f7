#include "platform/system/LocalTime.h"

#include <langinfo.h>
#include <locale.h>

#include <ctime>

namespace quillmoor {

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
  ::tzset();  // localtime_r need not do it: the zone may have changed since the start
  const std::time_t seconds = time.time_since_epoch().count();
  std::tm broken{};
  if (!::localtime_r(&seconds, &broken)) return LocalDateTime(time.time_since_epoch());
  return LocalDateTime(time.time_since_epoch() + std::chrono::seconds(broken.tm_gmtoff));
}

std::string DayHalfText(bool afternoon) {
  // The user's locale, whatever locale the program runs in.
  static const locale_t locale = ::newlocale(LC_TIME_MASK, "", nullptr);
  const std::string text = locale ? ::nl_langinfo_l(afternoon ? PM_STR : AM_STR, locale) : "";
  return !text.empty() ? text : afternoon ? "PM" : "AM";
}

}  // namespace quillmoor
