#include "profiles/ScheduleText.h"

#include <gtest/gtest.h>

namespace quillmoor {
namespace {

TEST(ScheduleText, NamesTheDaysThatAreSelected) {
  EXPECT_EQ(ScheduleText({}, 12, 30), "Never: no weekday is selected");
  EXPECT_EQ(ScheduleText({1, 0, -1, 0, 0, 2, 0, 0}, 12, 30), "Never: no weekday is selected");
  EXPECT_EQ(ScheduleText({0, 0, 1}, 3, 5), "Every Monday at 03:05");
  EXPECT_EQ(ScheduleText({0, 1, 1, 0, 0, 0, 0, 1}, 23, 0), "Every Sunday, Monday and Saturday at 23:00");
  EXPECT_EQ(ScheduleText({0, 1, 1, 1, 1, 1, 1, 1}, 0, 0), "Every day at 00:00");
}

TEST(ClockText, CountsTwiceToTwelve) {
  const struct {
    int hour;
    const char* text;
  } cases[] = {{0, "12:05:09 AM"},  {3, "03:05:09 AM"},  {11, "11:05:09 AM"},
               {12, "12:05:09 PM"}, {15, "03:05:09 PM"}, {23, "11:05:09 PM"}};
  for (const auto& one : cases)
    EXPECT_EQ(ClockText(*MakeLocalDateTime({2026, 11, 24, one.hour, 5, 9, 0})), one.text);
}

}  // namespace
}  // namespace quillmoor
