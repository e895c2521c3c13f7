#include "profiles/ApplicationSettings.h"

#include "base/LenientNumber.h"
#include "profiles/NameOrder.h"
#include "profiles/SettingsStore.h"

namespace quillmoor {
namespace {

std::string stored(const char* key) {
  return ReadSetting(key, std::string(DefinitionOf(key).defaultText));
}

/// Reads numbers and notes those that cannot be read.
class Numbers {
 public:
  explicit Numbers(std::vector<std::string>* notes) : notes_(notes) {}

  std::int32_t whole(const char* key) const { return SettingNumber(DefinitionOf(key), usable(key)).value(); }
  /// The window's place may be stored with decimals.
  double real(const char* key) const { return Val(usable(key)); }

 private:
  std::string usable(const char* key) const {
    const SettingDefinition& setting = DefinitionOf(key);
    std::string text = stored(key);
    std::string note = SettingNote(setting, text);
    if (note.empty()) return text;
    if (notes_) notes_->push_back(std::move(note));
    return std::string(setting.defaultText);
  }

  std::vector<std::string>* notes_;
};

/// A Boolean is stored as a word or as a number.
bool boolean(const char* key) {
  const std::string text = stored(key);
  return SameName(text, "True") || Val(text) != 0;
}

}  // namespace

ApplicationSettings LoadApplicationSettings(std::vector<std::string>* notes) {
  const Numbers number(notes);
  ApplicationSettings s;
  s.MainLeft = number.real("MainLeft");
  s.MainTop = number.real("MainTop");
  s.MainWidth = number.real("MainWidth");
  s.MainHeight = number.real("MainHeight");
  s.TransferType = number.whole("TransferType");
  s.Passive = boolean("Passive");
  s.Timeout = number.whole("Timeout");
  s.RemotePort = number.whole("RemotePort");
  s.ScheduleHour = number.whole("SchedualHour");
  s.ScheduleMinute = number.whole("SchedualMinute");
  for (std::size_t day = 1; day < s.ScheduleDays.size(); ++day) {
    s.ScheduleDays[day] = number.whole(kScheduleDayKeys[day]);
  }
  s.ProcessPriority = number.whole("ProcessPriority");
  s.AutoDial = number.whole("AutoDial");
  s.AutoHangUp = number.whole("AutoHangUp");
  s.AutoDialUpConnection = stored("AutoDialUpConnection");
  s.AutoStartUp = number.whole("AutoStartUp");
  s.BackupMode = number.whole("BackupMode");
  s.UniqueBackup = number.whole("UniqueBackup");
  s.CreateZip = number.whole("CreateZip");
  s.SplitZip = number.whole("SplitZip");
  s.ZipSpanSize = number.whole("ZipSpanSize");
  s.ZipSelfExtract = number.whole("ZipSelfExtract");
  s.ZipPassword = stored("ZipPassword");
  s.ZipCopies = stored("ZipCopies");
  s.RunBefore = stored("RunBefore");
  s.RunAfter = stored("RunAfter");
  s.ConnectBefore = stored("ConnectBefore");
  s.ConnectAfter = stored("ConnectAfter");
  s.FtpRetryCount = number.whole("FtpRetryCount");
  s.ConnectionDelay = number.whole("ConnectionDelay");
  s.LoginAttempts = number.whole("LoginAttempts");
  s.NamesAsListed = number.whole("NamesAsListed");
  return s;
}

std::string LoadAsciiExtensions() {
  return stored("AsciiExts");
}

}  // namespace quillmoor
