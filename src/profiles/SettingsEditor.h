// What the settings form shows and does, without the form, except the dial-up part's own buttons and labels
// (profiles/DialUpPanel.h) and the clock (profiles/ScheduleText.h).
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
/// that cannot be stored is reported once and is used all the same.
class SettingsEditor {
 public:
  /// All must outlive this. The program uses `settings`. Raises RegistryStoreError when the store cannot be
  /// read.
  SettingsEditor(ApplicationSettings& settings, DialUpPanel& dialUp, UserPrompts& prompts);

  std::int32_t startHour = 0;    // 0..23
  std::int32_t startMinute = 0;  // 0..59
  /// The check boxes, 1 = Sunday .. 7 = Saturday. Only the form reads them: a change takes effect at the next
  /// start of the program.
  std::array<bool, 8> days{};
  bool chkAutoDial = true;
  bool chkAutoHangUp = true;
  bool chkAutoStartUp = true;
  /// Why the autostart entry could not be set as the box says, "" when it could.
  std::string autoStartUpNote;
  std::string txtRetryCount;
  std::string txtConnectionDelay;  // seconds
  std::string txtLoginAttempts;    // 0: no limit
  /// Notes beside the three boxes; "" when there is none.
  std::string retryCountNote, connectionDelayNote, loginAttemptsNote;
  std::vector<std::string> lstExtensions;
  /// The add-extension box.
  std::string txtExtension;
  std::int32_t priorityPosition = 0;  // of the slider; 7, one past its end, for a class that is not on it
  std::string lblPriority;

  /// The start-time picker. Takes effect at the next tick of the scheduler.
  void SetStartTime(std::int32_t hour, std::int32_t minute);
  void SetDay(std::size_t weekday, bool checked);

  void SetAutoDial(bool checked);
  void SetAutoHangUp(bool checked);
  void ChooseDialUpEntry(const std::string& text);

  /// Also sets or removes the autostart entry and updates the note.
  void SetAutoStartUp(bool checked);

  /// The boxes keep the texts as typed; the leading number is stored, at least 0.
  void SetRetryCount(const std::string& text);
  void SetConnectionDelay(const std::string& text);
  void SetLoginAttempts(const std::string& text);

  /// Adds the text of the add-extension box to the list, in lower case and with a dot, as names are compared:
  /// " TXT" becomes ".txt".
  void AddExtension();
  void RemoveExtension(std::optional<std::size_t> selected);
  void RestoreExtensions();

  /// Handles a move of the slider.
  void MovePriority(std::int32_t position);

  /// The form's save step, when it is unloaded: writes start time, days, priority and extensions as the form
  /// shows them. Failures are not reported: that was done when each value changed.
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
