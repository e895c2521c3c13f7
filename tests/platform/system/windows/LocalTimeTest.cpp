// Local times by the rules of a zone that is handed in: the machine's own zone is not a test's to choose.
#include "platform/system/windows/SystemTime.h"

#include "../LocalTimeCases.h"

namespace quillmoor {
namespace {

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

TEST(LocalTime, GoesToUtcAndBack) {
  for (const auto& zone : kZones) {
    const TIME_ZONE_INFORMATION& rules = zone.rules;
    testing::expectLocalTimes(
        zone.name, [&](sys_seconds utc) { return UtcToLocal(utc, rules); },
        [&](LocalDateTime local) { return LocalToUtc(local, rules); });
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
