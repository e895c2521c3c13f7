// Local times by the rules of a zone that is handed in: the machine's own zone is not a test's to choose.
#include <gtest/gtest.h>

#include "platform/windows/SystemTime.h"

namespace quillmoor {
namespace {

using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;
using std::chrono::sys_seconds;

/// A change of the clock on the `week`th Sunday of the month; 5 is the last one.
struct Change {
  WORD month, week, hour;
};

TIME_ZONE_INFORMATION zone(LONG bias, LONG daylight, Change toDaylight, Change toStandard) {
  TIME_ZONE_INFORMATION rules{};
  rules.Bias = bias;
  rules.DaylightBias = daylight;
  rules.DaylightDate.wMonth = toDaylight.month;
  rules.DaylightDate.wDay = toDaylight.week;
  rules.DaylightDate.wHour = toDaylight.hour;
  rules.StandardDate.wMonth = toStandard.month;
  rules.StandardDate.wDay = toStandard.week;
  rules.StandardDate.wHour = toStandard.hour;
  return rules;
}

const struct {
  const char* name;
  TIME_ZONE_INFORMATION rules;
} kZones[] = {
    {"UTC", zone(0, 0, {0, 0, 0}, {0, 0, 0})},
    {"central Europe", zone(-60, -60, {3, 5, 2}, {10, 5, 3})},
    {"eastern America", zone(300, -60, {3, 2, 2}, {11, 1, 2})},
    {"southern Australia", zone(-600, -60, {10, 1, 2}, {4, 1, 3})},
    {"an island of half an hour", zone(-630, -30, {10, 1, 2}, {4, 1, 2})},
    {"Nepal", zone(-345, 0, {0, 0, 0}, {0, 0, 0})},
};

LocalDateTime at(int month, int day, int hour, int minute) {
  return *MakeLocalDateTime({2026, month, day, hour, minute, 0, 0});
}

TEST(LocalTime, GoesToUtcAndBackAllYearLong) {
  const sys_seconds newYear{seconds(1767225600)};
  for (const auto& [name, rules] : kZones) {
    for (sys_seconds utc = newYear; utc < newYear + hours(365 * 24); utc += minutes(15)) {
      const LocalDateTime local = UtcToLocal(utc, rules);
      const sys_seconds again = LocalToUtc(local, rules);
      // Of two moments with the same local time either may come, but it has that local time.
      ASSERT_EQ(UtcToLocal(again, rules), local) << name << " " << utc.time_since_epoch().count();
      ASSERT_LE(std::chrono::abs(again - utc), hours(1)) << name;
    }
  }
}

TEST(LocalTime, ReadsASkippedTimeAsAClockNotYetChangedWould) {
  const struct {
    std::size_t zone;
    LocalDateTime skipped, shown;
  } cases[] = {
      {1, at(3, 29, 2, 0), at(3, 29, 3, 0)},   {1, at(3, 29, 2, 59), at(3, 29, 3, 59)},
      {2, at(3, 8, 2, 30), at(3, 8, 3, 30)},   {3, at(10, 4, 2, 30), at(10, 4, 3, 30)},
      {4, at(10, 4, 2, 15), at(10, 4, 2, 45)},
  };
  for (const auto& c : cases) {
    const auto& rules = kZones[c.zone].rules;
    EXPECT_EQ(UtcToLocal(LocalToUtc(c.skipped, rules), rules), c.shown) << kZones[c.zone].name;
  }
}

TEST(LocalTime, IsTheMachinesOwn) {
  SYSTEMTIME system;
  ::GetLocalTime(&system);
  const LocalDateTimeParts parts = SplitLocalDateTime(LocalNow());
  const LocalDateTimeParts expected{
      system.wYear, system.wMonth, system.wDay, system.wHour, system.wMinute, system.wSecond, 0};
  EXPECT_LE(*MakeLocalDateTime(parts) - *MakeLocalDateTime(expected), seconds(5));
  EXPECT_EQ(parts.weekday, system.wDayOfWeek + 1);
}

}  // namespace
}  // namespace quillmoor
