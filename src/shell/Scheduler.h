// The weekly schedule: one time of day on any set of weekdays.
#pragma once

#include <array>
#include <cstdint>
#include <functional>

#include "platform/system/LocalTime.h"
#include "profiles/ApplicationSettings.h"

namespace quillmoor {

/// Starts one run on each selected weekday, at the first tick within the scheduled minute. Deliberate: it
/// remembers only the weekday on which it last fired, and does not fire on that weekday again, even in later
/// weeks, until it has fired on another. Missed runs are not made up for.
class Scheduler {
 public:
  /// `now` returns the local time; `startBackup` schedules the start of a run and returns at once. The hour
  /// and the minute are read from `settings`, which must outlive this, at every tick. The days are read only
  /// here, so that a changed day takes effect at the next start of the program.
  Scheduler(const ApplicationSettings& settings, std::function<LocalDateTime()> now,
            std::function<void()> startBackup);

  /// Called before a run is started; false while another process performs one. Nothing fires then, and the
  /// weekday is not remembered. May be empty.
  std::function<bool()> mayStart;
  /// Called once for each scheduled minute in which `mayStart` prevents a run. May be empty.
  std::function<void()> onMissed;

  /// Called by `TimerMain` once a second. Does nothing while BackupRunning; requests a run when it fires.
  void tick();

  /// The flags in effect, 1 = Sunday .. 7 = Saturday; a day is selected when its flag is exactly 1.
  const std::array<std::int32_t, 8>& ScheduleDays() const { return ScheduleDays_; }
  /// 0 = has not fired yet.
  std::int32_t LastScheduledWeekday() const { return LastScheduledWeekday_; }

 private:
  const ApplicationSettings& settings_;
  std::function<LocalDateTime()> now_;
  std::function<void()> startBackup_;
  const std::array<std::int32_t, 8> ScheduleDays_;
  std::int32_t LastScheduledWeekday_ = 0;
  bool missReported_ = false;  // in the current minute
};

}  // namespace quillmoor
