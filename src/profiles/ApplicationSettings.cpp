#include "profiles/ApplicationSettings.h"

#include <algorithm>
#include <stdexcept>

#include "profiles/LenientNumber.h"
#include "profiles/NameOrder.h"
#include "profiles/SettingsStore.h"

namespace quillmoor {
namespace {

std::string stored(const char* key) {
  const auto definition = std::find_if(kSettings.begin(), kSettings.end(),
                                       [&](const auto& setting) { return setting.key == key; });
  if (definition == kSettings.end()) throw std::logic_error(std::string("There is no setting ") + key);
  return ReadSetting(key, std::string(definition->defaultText));
}

std::int32_t number(const char* key) {
  try {
    return ToLong(stored(key));
  } catch (const std::overflow_error&) {
    throw std::overflow_error(std::string("The setting ") + key + " is too large: " + stored(key));
  }
}

/// A Boolean is stored as a word or as a number.
bool boolean(const char* key) {
  const std::string text = stored(key);
  return SameName(text, "True") || Val(text) != 0;
}

}  // namespace

ApplicationSettings LoadApplicationSettings() {
  ApplicationSettings s;
  s.MainLeft = Val(stored("MainLeft"));
  s.MainTop = Val(stored("MainTop"));
  s.MainWidth = Val(stored("MainWidth"));
  s.MainHeight = Val(stored("MainHeight"));
  s.TransferType = number("TransferType");
  s.Passive = boolean("Passive");
  s.Timeout = number("Timeout");
  s.RemotePort = number("RemotePort");
  s.ScheduleHour = number("SchedualHour");
  s.ScheduleMinute = number("SchedualMinute");
  for (std::size_t day = 1; day < s.ScheduleDays.size(); ++day) {
    s.ScheduleDays[day] = number(kScheduleDayKeys[day]);
  }
  s.ProcessPriority = number("ProcessPriority");
  s.AutoDial = number("AutoDial");
  s.AutoHangUp = number("AutoHangUp");
  s.AutoDialUpConnection = stored("AutoDialUpConnection");
  s.AutoStartUp = number("AutoStartUp");
  s.BackupMode = number("BackupMode");
  s.UniqueBackup = number("UniqueBackup");
  s.CreateZip = number("CreateZip");
  s.SplitZip = number("SplitZip");
  s.ZipSpanSize = number("ZipSpanSize");
  s.ZipSelfExtract = number("ZipSelfExtract");
  s.ZipPassword = stored("ZipPassword");
  s.ZipCopies = stored("ZipCopies");
  s.RunBefore = stored("RunBefore");
  s.RunAfter = stored("RunAfter");
  s.ConnectBefore = stored("ConnectBefore");
  s.ConnectAfter = stored("ConnectAfter");
  s.FtpRetryCount = number("FtpRetryCount");
  s.ConnectionDelay = number("ConnectionDelay");
  return s;
}

std::string LoadAsciiExtensions() {
  return stored("AsciiExts");
}

}  // namespace quillmoor
