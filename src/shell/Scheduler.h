// The weekly schedule: one time of day, any set of weekdays.
#pragma once

#include <array>
#include <cstdint>
#include <functional>

#include "platform/system/LocalTime.h"
#include "profiles/ApplicationSettings.h"

namespace quillmoor {

/// Starts one run on each selected weekday, in the first tick inside the scheduled minute. Its only memory is
/// the weekday on which it fired last: until it has fired on another one, that weekday is served, also in the
/// weeks to come. What it missed, because a run was going on or the program was not, is not made up for.
class Scheduler {
 public:
  /// `now` returns the local time; `startBackup` arms the start of a run and returns at once. The hour and
  /// the minute are read from `settings`, which must outlive this, at every tick; the days only here and now,
  /// so that a day ticked later counts from the next start of the program.
  Scheduler(const ApplicationSettings& settings, std::function<LocalDateTime()> now,
            std::function<void()> startBackup);

  /// Asked before a run is started: false while a run of another program is going, which counts like one of
  /// ours: nothing fires and the weekday stays unserved. May be empty.
  std::function<bool()> mayStart;
  /// Called once for each scheduled minute in which that keeps a run from starting. May be empty.
  std::function<void()> onMissed;

  /// Tick of `TimerMain`, once a second. Does nothing while BackupRunning; requests a run when it fires.
  void tick();

  /// The flags in force, 1 = Sunday .. 7 = Saturday; a day is selected when its flag is exactly 1.
  const std::array<std::int32_t, 8>& ScheduleDays() const { return ScheduleDays_; }
  /// 0 = has not fired yet.
  std::int32_t LastScheduledWeekday() const { return LastScheduledWeekday_; }

 private:
  const ApplicationSettings& settings_;
  std::function<LocalDateTime()> now_;
  std::function<void()> startBackup_;
  const std::array<std::int32_t, 8> ScheduleDays_;
  std::int32_t LastScheduledWeekday_ = 0;
  bool missReported_ = false;  // in the minute that is now
};

}  // namespace quillmoor
