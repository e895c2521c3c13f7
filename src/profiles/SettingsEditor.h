// What the settings form shows and does, without the form: all of it but the dial-up part's own buttons and
// labels (profiles/DialUpPanel.h) and the clock (profiles/ScheduleText.h).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "profiles/ApplicationSettings.h"
#include "profiles/DialUpPanel.h"
#include "profiles/SettingWriter.h"
#include "profiles/UserPrompts.h"

namespace quillmoor {

/// The form fills its controls from the public fields when it is loaded, calls a member with the new value
/// for each control that changes, and then shows what the fields say. Every value is stored at once. A value
/// that cannot be stored is told of once, and counts as if it had been.
class SettingsEditor {
 public:
  /// All must outlive this. `settings` is what the program goes by. Raises RegistryStoreError when the store
  /// cannot be read.
  SettingsEditor(ApplicationSettings& settings, DialUpPanel& dialUp, UserPrompts& prompts);

  std::int32_t startHour = 0;    // 0..23
  std::int32_t startMinute = 0;  // 0..59
  /// The check boxes, 1 = Sunday .. 7 = Saturday. Nothing reads them but the form: the schedule in force
  /// takes a newly ticked day at the next start of the program.
  std::array<bool, 8> days{};
  bool chkAutoDial = true;
  bool chkAutoHangUp = true;
  bool chkAutoStartUp = true;
  /// Why the program's start with the session could not be set as the box says, "" when it could.
  std::string autoStartUpNote;
  std::string txtRetryCount;
  std::string txtConnectionDelay;  // seconds
  std::string txtLoginAttempts;    // 0: no limit
  /// Lines beside the three, "" when there is nothing to say.
  std::string retryCountNote, connectionDelayNote, loginAttemptsNote;
  std::vector<std::string> lstExtensions;
  /// The add-extension box.
  std::string txtExtension;
  std::int32_t priorityPosition = 0;  // of the slider; 7, one past its end, for a class that it does not have
  std::string lblPriority;

  /// The start-time picker. Takes effect at the next tick of the scheduler.
  void SetStartTime(std::int32_t hour, std::int32_t minute);
  void SetDay(std::size_t weekday, bool checked);

  void SetAutoDial(bool checked);
  void SetAutoHangUp(bool checked);
  void ChooseDialUpEntry(const std::string& text);

  /// Also sets or removes the entry that starts the program with the session, and writes the note anew.
  void SetAutoStartUp(bool checked);

  /// The texts stay as they were typed; what leads them as a number counts, nothing below 0.
  void SetRetryCount(const std::string& text);
  void SetConnectionDelay(const std::string& text);
  void SetLoginAttempts(const std::string& text);

  /// Puts what the add-extension box holds into the list. Names are compared in small letters and with their
  /// dot, so that is how it is kept: " TXT" becomes ".txt".
  void AddExtension();
  void RemoveExtension(std::optional<std::size_t> selected);
  void RestoreExtensions();

  /// The slider has been moved.
  void MovePriority(std::int32_t position);

  /// The form's save step, when it is unloaded: writes start time, days, priority and extensions as the form
  /// shows them. What fails is not told of: each value was stored, or told of, when it changed.
  void Save();

 private:
  void setAutoRun(bool checked);
  std::int32_t storeNumber(const char* key, const std::string& text, std::int32_t largest);
  void storeStartTime();
  void storeDay(std::size_t weekday);
  void storeExtensions();

  ApplicationSettings& settings_;
  DialUpPanel& dialUp_;
  UserPrompts& prompts_;
  SettingWriter writer_;
};

}  // namespace quillmoor
