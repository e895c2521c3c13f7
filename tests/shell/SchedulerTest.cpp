// The weekly schedule, second by second through whole weeks.
#include "shell/Scheduler.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "engine/BackupRunning.h"
#include "engine/mGeneral.h"

namespace quillmoor {
namespace {

using std::chrono::days;
using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;

enum Day { kSunday = 1, kMonday, kTuesday, kWednesday, kThursday, kFriday, kSaturday };

/// Sunday, 1 November 2026.
const LocalDateTime kFirstSunday = *MakeLocalDateTime({2026, 11, 1, 0, 0, 0, 0});

LocalDateTime on(int day, int hour, int minute, int second = 0) {
  return kFirstSunday + days(day - kSunday) + hours(hour) + minutes(minute) + seconds(second);
}

class SchedulerTest : public ::testing::Test {
 protected:
  SchedulerTest() { backupRun = {}; }
  ~SchedulerTest() override { backupRun = {}; }

  /// Starts the program at `now`.
  void startProgram(LocalDateTime now) {
    clock = now;
    scheduler = std::make_unique<Scheduler>(
        settings, [this] { return clock; },
        [this] {
          EXPECT_TRUE(BackupRunning()) << "a second tick could start the run again";
          started.push_back(ReportTimeText(clock));
          runEnds = clock + length;
        });
  }

  void tick() {
    if (BackupRunning() && clock >= runEnds) backupRun = {};
    scheduler->tick();
  }

  void runUntil(LocalDateTime end) {
    for (; clock < end; clock += seconds(1)) tick();
  }

  ApplicationSettings settings;
  LocalDateTime clock;
  seconds length{5};  // of every run
  LocalDateTime runEnds{};
  std::unique_ptr<Scheduler> scheduler;
  std::vector<std::string> started;
};

using Starts = std::vector<std::string>;

TEST_F(SchedulerTest, StartsOnEveryDayWhoseOwnFlagIsExactlyOne) {
  for (int day = kSunday; day <= kSaturday; ++day) {
    settings.ScheduleDays = {1, -1, 2, 256 + 1, 0, -1, 2, 256 + 1};  // index 0 is no day
    settings.ScheduleDays[static_cast<std::size_t>(day)] = 1;
    started.clear();
    startProgram(on(kSunday, 0, 0));
    runUntil(on(kSunday + 7, 0, 0));
    EXPECT_EQ(started, Starts{ReportTimeText(on(day, 12, 30))});
    EXPECT_EQ(scheduler->LastScheduledWeekday(), day);
  }
}

TEST_F(SchedulerTest, ReportsAMinuteMissedDuringAnotherProgramsRunAndCanStillUseTheDay) {
  settings.ScheduleDays[kMonday] = 1;
  startProgram(on(kSunday, 0, 0));
  LocalDateTime otherEnds = on(kMonday, 13, 0);
  int missed = 0;
  scheduler->mayStart = [&] { return clock >= otherEnds; };
  scheduler->onMissed = [&] { ++missed; };
  runUntil(on(kMonday, 14, 0));
  EXPECT_EQ(started, Starts{});
  EXPECT_EQ(missed, 1);
  EXPECT_EQ(scheduler->LastScheduledWeekday(), 0);
  otherEnds = on(kMonday + 7, 12, 30, 20);
  runUntil(on(kMonday + 7, 14, 0));
  EXPECT_EQ(started, Starts{"11-09-2026 12:30"}) << "the minute has not passed yet";
  EXPECT_EQ(missed, 2);
}

TEST_F(SchedulerTest, StartsWithinTheMinuteAndOnTheSameWeekdayOnlyAfterAnotherOne) {
  const LocalDateTime minute = on(kMonday, 12, 30), none{};
  const struct {
    const char* name;
    int otherDay;  // besides Monday
    LocalDateTime opened;
    LocalDateTime handRunEnds;  // of a run started by hand before the program opens
    Starts starts;              // in two weeks
    seconds length{5};
  } cases[] = {
      {"one day", 0, on(kSunday, 0, 0), none, {"11-02-2026 12:30"}},
      {"two days unlock each other",
       kThursday,
       on(kSunday, 0, 0),
       none,
       {"11-02-2026 12:30", "11-05-2026 12:30", "11-09-2026 12:30", "11-12-2026 12:30"}},
      {"a run shorter than its minute", 0, minute - hours(1), none, {"11-02-2026 12:30"}, seconds(1)},
      {"at its last", 0, minute + seconds(59), none, {"11-02-2026 12:30"}},
      {"not after it", 0, minute + seconds(60), none, {"11-09-2026 12:30"}},
      {"missed during a run", 0, minute - seconds(30), minute + seconds(60), {"11-09-2026 12:30"}},
      {"a run ends inside it", 0, minute - seconds(30), minute + seconds(40), {"11-02-2026 12:30"}},
  };
  for (const auto& c : cases) {
    started.clear();
    settings.ScheduleDays = {0, 0, 1};
    if (c.otherDay != 0) settings.ScheduleDays[static_cast<std::size_t>(c.otherDay)] = 1;
    length = c.length;
    startProgram(c.opened);
    backupRun = {};
    if (c.handRunEnds != none) backupRun.begin();
    runEnds = c.handRunEnds;
    runUntil(on(kSunday + 14, 0, 0));
    EXPECT_EQ(started, c.starts) << c.name;
  }
}

TEST_F(SchedulerTest, AppliesANewTimeAtOnceAndANewDayAtTheNextProgramStart) {
  settings.ScheduleDays[kMonday] = 1;
  startProgram(on(kMonday, 9, 0));
  settings.ScheduleDays[kTuesday] = 1;
  runUntil(on(kMonday, 9, 5));
  settings.ScheduleHour = 9;
  settings.ScheduleMinute = 7;
  runUntil(on(kMonday + 2, 0, 0));
  EXPECT_EQ(started, Starts{"11-02-2026 09:07"});
  startProgram(on(kMonday + 7, 9, 0));
  runUntil(on(kMonday + 9, 0, 0));
  EXPECT_EQ(started, (Starts{"11-02-2026 09:07", "11-09-2026 09:07", "11-10-2026 09:07"}));
}

}  // namespace
}  // namespace quillmoor
