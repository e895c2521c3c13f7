#include "profiles/ScheduleText.h"

#include <vector>

namespace quillmoor {
namespace {

std::string twoDigits(std::int32_t number) {
  return (number >= 0 && number < 10 ? "0" : "") + std::to_string(number);
}

}  // namespace

std::string ScheduleText(const std::array<std::int32_t, 8>& days, std::int32_t hour, std::int32_t minute) {
  std::vector<std::string> names;
  for (std::size_t day = 1; day < days.size(); ++day) {
    if (days[day] == 1) names.emplace_back(kWeekdayNames[day]);
  }
  if (names.empty()) return "Never: no weekday is selected";
  std::string text = "Every ";
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i != 0) text += i + 1 == names.size() ? " and " : ", ";
    text += names[i];
  }
  if (names.size() == 7) text = "Every day";
  return text + " at " + twoDigits(hour) + ":" + twoDigits(minute);
}

std::string ClockText(LocalDateTime time) {
  const LocalDateTimeParts parts = SplitLocalDateTime(time);
  const int hour = parts.hour % 12 == 0 ? 12 : parts.hour % 12;
  return twoDigits(hour) + ":" + twoDigits(parts.minute) + ":" + twoDigits(parts.second) + " " +
         DayHalfText(parts.hour >= 12);
}

}  // namespace quillmoor
