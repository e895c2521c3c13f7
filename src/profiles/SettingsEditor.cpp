#include "profiles/SettingsEditor.h"

#include <algorithm>
#include <exception>
#include <limits>

#include "base/Ascii.h"
#include "base/LenientNumber.h"
#include "connectivity/modProcessPriority.h"
#include "profiles/JoinedList.h"
#include "profiles/PrioritySlider.h"
#include "profiles/SiteProfileStore.h"
#include "profiles/mAutoRun.h"

namespace quillmoor {
namespace {

// A walk counts one round more than the attempts.
constexpr std::int32_t kMostRetries = std::numeric_limits<std::int32_t>::max() - 1;
// In seconds. A run waits in milliseconds, which are a 32-bit number.
constexpr std::int32_t kLongestDelay = std::numeric_limits<std::int32_t>::max() / 1000;

/// For a text that is not a number in the range: another number was stored.
std::string noteOn(const std::string& text, std::int32_t stored, std::int32_t largest) {
  const std::string typed = TrimmedText(text);
  const bool digits = !typed.empty() && typed.find_first_not_of("0123456789") == std::string::npos;
  if (digits && Val(typed) <= largest) return "";
  return (digits ? "This is too large; " : "Must be a whole number; ") + std::to_string(stored) +
         " is stored.";
}

std::string extensionOf(std::string text) {
  text = AsciiLower(TrimmedText(text));
  return text.empty() || text[0] == '.' ? text : "." + text;
}

}  // namespace

SettingsEditor::SettingsEditor(ApplicationSettings& settings, DialUpPanel& dialUp, UserPrompts& prompts)
    : startHour(std::clamp(settings.ScheduleHour, 0, 23)),
      startMinute(std::clamp(settings.ScheduleMinute, 0, 59)),
      chkAutoDial(settings.AutoDial == 1),
      chkAutoHangUp(settings.AutoHangUp == 1),
      chkAutoStartUp(settings.AutoStartUp == 1),
      txtRetryCount(std::to_string(settings.FtpRetryCount)),
      txtConnectionDelay(std::to_string(settings.ConnectionDelay)),
      txtLoginAttempts(std::to_string(settings.LoginAttempts)),
      lstExtensions(SplitList(LoadAsciiExtensions())),
      priorityPosition(modProcessPriority::ClassToPosition(settings.ProcessPriority)),
      lblPriority(modProcessPriority::ClassName(settings.ProcessPriority)),
      settings_(settings),
      dialUp_(dialUp),
      prompts_(prompts),
      writer_(prompts) {
  for (std::size_t day = 1; day < days.size(); ++day) days[day] = settings.ScheduleDays[day] == 1;
}

void SettingsEditor::SetStartTime(std::int32_t hour, std::int32_t minute) {
  startHour = settings_.ScheduleHour = hour;
  startMinute = settings_.ScheduleMinute = minute;
  writer_.Together([this] { storeStartTime(); });
}

void SettingsEditor::storeStartTime() {
  writer_.Write("SchedualHour", std::to_string(startHour));
  writer_.Write("SchedualMinute", std::to_string(startMinute));
}

void SettingsEditor::SetDay(std::size_t weekday, bool checked) {
  days.at(weekday) = checked;
  storeDay(weekday);
}

void SettingsEditor::storeDay(std::size_t weekday) {
  writer_.WriteFlag(kScheduleDayKeys.at(weekday), days[weekday]);
}

void SettingsEditor::SetAutoDial(bool checked) {
  chkAutoDial = checked;
  writer_.Attempt("AutoDial", [&] { dialUp_.SetAutoDial(checked); });
}

void SettingsEditor::SetAutoHangUp(bool checked) {
  chkAutoHangUp = checked;
  writer_.Attempt("AutoHangUp", [&] { dialUp_.SetAutoHangUp(checked); });
}

void SettingsEditor::ChooseDialUpEntry(const std::string& text) {
  writer_.Attempt("AutoDialUpConnection", [&] { dialUp_.ChooseEntry(text); });
}

void SettingsEditor::SetAutoStartUp(bool checked) {
  chkAutoStartUp = checked;
  settings_.AutoStartUp = checked ? 1 : 0;
  writer_.Together([&] {
    writer_.WriteFlag("AutoStartUp", checked);
    writer_.Attempt("autostart", [&] { setAutoRun(checked); });
  });
}

void SettingsEditor::setAutoRun(bool checked) {
  try {
    mAutoRun::SetAutoRun(checked ? mAutoRun::Mode::always : mAutoRun::Mode::off);
    autoStartUpNote = "";
  } catch (const std::exception& error) {
    autoStartUpNote = StorageFailure(error);
    throw;
  }
}

std::int32_t SettingsEditor::storeNumber(const char* key, const std::string& text, std::int32_t largest) {
  const std::int32_t number = ToLong(std::clamp(Val(text), 0.0, static_cast<double>(largest)));
  writer_.Write(key, std::to_string(number));
  return number;
}

void SettingsEditor::SetRetryCount(const std::string& text) {
  txtRetryCount = text;
  settings_.FtpRetryCount = storeNumber("FtpRetryCount", text, kMostRetries);
  retryCountNote = noteOn(text, settings_.FtpRetryCount, kMostRetries);
}

void SettingsEditor::SetConnectionDelay(const std::string& text) {
  txtConnectionDelay = text;
  settings_.ConnectionDelay = storeNumber("ConnectionDelay", text, kLongestDelay);
  connectionDelayNote = noteOn(text, settings_.ConnectionDelay, kLongestDelay);
}

void SettingsEditor::SetLoginAttempts(const std::string& text) {
  txtLoginAttempts = text;
  settings_.LoginAttempts = storeNumber("LoginAttempts", text, kMostLoginAttempts);
  loginAttemptsNote = noteOn(text, settings_.LoginAttempts, kMostLoginAttempts);
}

void SettingsEditor::AddExtension() {
  txtExtension = extensionOf(txtExtension);
  if (txtExtension.empty()) return;
  if (txtExtension.find(kListSeparator) != std::string::npos) {
    prompts_.ShowMessage(
        ErrorMessage("\"" + txtExtension + "\" is more than one extension: add each by itself."));
    return;
  }
  if (std::find(lstExtensions.begin(), lstExtensions.end(), txtExtension) == lstExtensions.end())
    lstExtensions.push_back(txtExtension);
  storeExtensions();
}

void SettingsEditor::RemoveExtension(std::optional<std::size_t> selected) {
  if (!selected || *selected >= lstExtensions.size()) return;
  lstExtensions.erase(lstExtensions.begin() + static_cast<std::ptrdiff_t>(*selected));
  storeExtensions();
}

void SettingsEditor::RestoreExtensions() {
  lstExtensions = SplitList(kDefaultAsciiExtensions);
  storeExtensions();
}

void SettingsEditor::storeExtensions() {
  writer_.Write("AsciiExts", JoinList(lstExtensions));
}

void SettingsEditor::MovePriority(std::int32_t position) {
  priorityPosition = position;
  lblPriority = modProcessPriority::ClassName(modProcessPriority::PositionToClass(position));
  writer_.Attempt("ProcessPriority", [&] { PrioritySliderMoved(position, settings_); });
}

void SettingsEditor::Save() {
  writer_.Quietly([this] {
    storeStartTime();
    for (std::size_t day = 1; day < days.size(); ++day) storeDay(day);
    writer_.Write("ProcessPriority", std::to_string(modProcessPriority::PositionToClass(priorityPosition)));
    storeExtensions();
  });
}

}  // namespace quillmoor
