// What holds in every zone whose clocks change, however the system describes its rules.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "platform/system/LocalTime.h"

namespace quillmoor::testing {

/// A time of 2026 that a clock skips, and how much later a clock shows that is set to it.
struct SkippedTime {
  std::string zone;
  int month, day, hour, minute, later;
};
inline const SkippedTime kSkippedTimes[] = {
    {"central Europe", 3, 29, 2, 0, 60},
    {"central Europe", 3, 29, 2, 59, 60},
    {"eastern America", 3, 8, 2, 30, 60},
    {"southern Australia", 10, 4, 2, 30, 60},
    {"an island of half an hour", 10, 4, 2, 15, 30},
};

/// Converts every quarter of an hour of a year to local time and back. A time that the clock skips counts as
/// that of a clock not yet changed.
template <class ToLocal, class ToUtc>
void expectLocalTimes(const std::string& zone, ToLocal toLocal, ToUtc toUtc) {
  using namespace std::chrono;
  const sys_seconds newYear{seconds(1767225600)};
  for (sys_seconds utc = newYear; utc < newYear + hours(365 * 24); utc += minutes(15)) {
    const LocalDateTime local = toLocal(utc);
    const sys_seconds again = toUtc(local);
    // Of two moments with the same local time either is right.
    ASSERT_EQ(toLocal(again), local) << zone << " " << utc.time_since_epoch().count();
    ASSERT_LE(abs(again - utc), hours(1)) << zone;
  }
  for (const SkippedTime& c : kSkippedTimes) {
    if (c.zone != zone) continue;
    const LocalDateTime skipped = *MakeLocalDateTime({2026, c.month, c.day, c.hour, c.minute, 0, 0});
    // Whichever half of the year was asked for before.
    for (const sys_seconds before : {newYear, newYear + hours(181 * 24)}) {
      toUtc(toLocal(before));
      EXPECT_EQ(toLocal(toUtc(skipped)) - skipped, minutes(c.later)) << zone;
    }
  }
}

}  // namespace quillmoor::testing
