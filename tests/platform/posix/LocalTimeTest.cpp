// Local times in zones whose clocks change.
#include <gtest/gtest.h>

#include <chrono>

#include "TestPlatform.h"
#include "platform/LocalTime.h"

namespace quillmoor {
namespace {

using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;
using std::chrono::sys_seconds;
using testing::TimeZone;

LocalDateTime at(int month, int day, int hour, int minute) {
  return *MakeLocalDateTime({2026, month, day, hour, minute, 0, 0});
}

TEST(LocalTime, GoesToUtcAndBackAllYearLong) {
  const sys_seconds newYear{seconds(1767225600)};
  for (const char* zone : {"UTC0", "CET-1CEST,M3.5.0,M10.5.0/3", "EST5EDT,M3.2.0,M11.1.0",
                           "AEST-10AEDT,M10.1.0,M4.1.0/3", "LHST-10:30LHDT-11,M10.1.0,M4.1.0", "XYZ-5:45"}) {
    const TimeZone here(zone);
    for (sys_seconds utc = newYear; utc < newYear + hours(365 * 24); utc += minutes(15)) {
      const LocalDateTime local = UtcToLocal(utc);
      const sys_seconds again = LocalToUtc(local);
      // Of two moments with the same local time either may come, but it has that local time.
      ASSERT_EQ(UtcToLocal(again), local) << zone << " " << utc.time_since_epoch().count();
      ASSERT_LE(std::chrono::abs(again - utc), hours(1)) << zone;
    }
  }
}

TEST(LocalTime, ReadsASkippedTimeAsAClockNotYetChangedWould) {
  const struct {
    const char* zone;
    LocalDateTime skipped, shown;
  } cases[] = {
      {"CET-1CEST,M3.5.0,M10.5.0/3", at(3, 29, 2, 0), at(3, 29, 3, 0)},
      {"CET-1CEST,M3.5.0,M10.5.0/3", at(3, 29, 2, 59), at(3, 29, 3, 59)},
      {"EST5EDT,M3.2.0,M11.1.0", at(3, 8, 2, 30), at(3, 8, 3, 30)},
      {"AEST-10AEDT,M10.1.0,M4.1.0/3", at(10, 4, 2, 30), at(10, 4, 3, 30)},
      {"LHST-10:30LHDT-11,M10.1.0,M4.1.0", at(10, 4, 2, 15), at(10, 4, 2, 45)},
  };
  for (const auto& c : cases) {
    const TimeZone here(c.zone);
    // Whatever was asked before.
    for (const LocalDateTime before : {at(1, 1, 0, 0), at(7, 1, 0, 0), at(12, 31, 23, 59)}) {
      LocalToUtc(before);
      EXPECT_EQ(UtcToLocal(LocalToUtc(c.skipped)), c.shown) << c.zone;
    }
  }
}

TEST(LocalTime, FollowsTheMachineIntoAnotherZone) {
  const sys_seconds noon{seconds(1767268800)};
  const TimeZone home("UTC0");
  EXPECT_EQ(SplitLocalDateTime(UtcToLocal(noon)).hour, 12);
  const TimeZone abroad("XYZ-3");
  EXPECT_EQ(SplitLocalDateTime(UtcToLocal(noon)).hour, 15);
}

}  // namespace
}  // namespace quillmoor
