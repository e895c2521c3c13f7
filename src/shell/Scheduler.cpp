#include "shell/Scheduler.h"

#include <utility>

#include "engine/BackupRunning.h"

namespace quillmoor {

Scheduler::Scheduler(const ApplicationSettings& settings, std::function<LocalDateTime()> now,
                     std::function<void()> startBackup)
    : settings_(settings),
      now_(std::move(now)),
      startBackup_(std::move(startBackup)),
      ScheduleDays_(settings.ScheduleDays) {}

void Scheduler::tick() {
  if (BackupRunning()) return;
  const LocalDateTimeParts time = SplitLocalDateTime(now_());
  // Deliberate: compares only the weekday, not the date.
  if (time.weekday == LastScheduledWeekday_) return;
  if (ScheduleDays_.at(static_cast<std::size_t>(time.weekday)) != 1) return;
  if (time.hour != settings_.ScheduleHour || time.minute != settings_.ScheduleMinute) {
    missReported_ = false;
    return;
  }
  if (mayStart && !mayStart()) {
    if (!std::exchange(missReported_, true) && onMissed) onMissed();
    return;
  }
  missReported_ = false;
  backupRun.request();
  LastScheduledWeekday_ = time.weekday;
  startBackup_();
}

}  // namespace quillmoor
