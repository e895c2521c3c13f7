// Local times by the rules of a given zone, since a test cannot choose the machine's own.
#include "platform/system/windows/SystemTime.h"

#include "../LocalTimeCases.h"

namespace quillmoor {
namespace {

using std::chrono::seconds;
using std::chrono::sys_seconds;

/// 2 or 3 o'clock of the `week`th Sunday of the month; 5 is the last one.
constexpr SYSTEMTIME sunday(WORD month, WORD week, WORD hour) {
  return {0, month, 0, week, hour, 0, 0, 0};
}
constexpr SYSTEMTIME kNever{};

/// Minutes behind UTC, the start of standard time, the start of daylight time and the minutes that it adds.
const struct {
  const char* name;
  TIME_ZONE_INFORMATION rules;
} kZones[] = {
    {"UTC", {0, L"", kNever, 0, L"", kNever, 0}},
    {"central Europe", {-60, L"", sunday(10, 5, 3), 0, L"", sunday(3, 5, 2), -60}},
    {"eastern America", {300, L"", sunday(11, 1, 2), 0, L"", sunday(3, 2, 2), -60}},
    {"southern Australia", {-600, L"", sunday(4, 1, 3), 0, L"", sunday(10, 1, 2), -60}},
    {"an island of half an hour", {-630, L"", sunday(4, 1, 2), 0, L"", sunday(10, 1, 2), -30}},
    {"Nepal", {-345, L"", kNever, 0, L"", kNever, 0}},
};

TEST(LocalTime, GoesToUtcAndBack) {
  for (const auto& zone : kZones) {
    testing::expectLocalTimes(
        zone.name, [&](sys_seconds utc) { return UtcToLocal(utc, zone.rules); },
        [&](LocalDateTime local) { return LocalToUtc(local, zone.rules); });
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
