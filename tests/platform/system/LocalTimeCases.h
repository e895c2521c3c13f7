// What holds in every zone whose clocks change, by whatever rules a system has for them.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "platform/system/LocalTime.h"

namespace quillmoor::testing {

inline LocalDateTime timeOf2026(int month, int day, int hour, int minute) {
  return *MakeLocalDateTime({2026, month, day, hour, minute, 0, 0});
}

/// Times that a clock skips, and what it shows when they are set. The zones are those of both systems' tests.
struct SkippedTime {
  std::string zone;
  LocalDateTime skipped, shown;
};
inline const SkippedTime kSkippedTimes[] = {
    {"central Europe", timeOf2026(3, 29, 2, 0), timeOf2026(3, 29, 3, 0)},
    {"central Europe", timeOf2026(3, 29, 2, 59), timeOf2026(3, 29, 3, 59)},
    {"eastern America", timeOf2026(3, 8, 2, 30), timeOf2026(3, 8, 3, 30)},
    {"southern Australia", timeOf2026(10, 4, 2, 30), timeOf2026(10, 4, 3, 30)},
    {"an island of half an hour", timeOf2026(10, 4, 2, 15), timeOf2026(10, 4, 2, 45)},
};

/// All year long a moment goes to local time and back, and a skipped time is read as a clock not yet changed
/// would.
template <class ToLocal, class ToUtc>
void expectLocalTimes(const std::string& zone, ToLocal toLocal, ToUtc toUtc) {
  using namespace std::chrono;
  const sys_seconds newYear{seconds(1767225600)};
  for (sys_seconds utc = newYear; utc < newYear + hours(365 * 24); utc += minutes(15)) {
    const LocalDateTime local = toLocal(utc);
    const sys_seconds again = toUtc(local);
    // Of two moments with the same local time either may come, but it has that local time.
    ASSERT_EQ(toLocal(again), local) << zone << " " << utc.time_since_epoch().count();
    ASSERT_LE(abs(again - utc), hours(1)) << zone;
  }
  for (const SkippedTime& c : kSkippedTimes) {
    if (c.zone != zone) continue;
    // Whatever was asked before.
    for (const LocalDateTime before : {timeOf2026(1, 1, 0, 0), timeOf2026(7, 1, 0, 0)}) {
      toUtc(before);
      EXPECT_EQ(toLocal(toUtc(c.skipped)), c.shown) << zone;
    }
  }
}

}  // namespace quillmoor::testing
