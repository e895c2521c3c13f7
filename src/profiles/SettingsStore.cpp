#include "profiles/SettingsStore.h"

#include <stdexcept>

#include "base/LenientNumber.h"
#include "platform/registry/RegistryApi.h"
#include "platform/system/CodePage.h"
#include "platform/system/PrintableText.h"
#include "profiles/ApplicationSettings.h"
#include "profiles/cRegistry.h"

namespace quillmoor {

using Kind = SettingDefinition::Kind;

const char* const kDefaultAsciiExtensions =
    ".txt|.text|.asp|.bash|.bat|.cfm|.inc|.mak|.php|.php3|.php4|.qmail|.pas|.cpp|.c|.cxx|.h|.hpp|.xs|.rc|."
    "bas|.frm|"
    ".vbs|.js|.css|.cgi|.pm|.pl|.t|.html|.htm|.shtm|.shtml|.dhtml|.phtml|.java|.jsp|.config|.manifest|.log|."
    "sql";

const std::array<SettingDefinition, 39> kSettings = {{
    {"MainLeft", Kind::number, "1000"},
    {"MainTop", Kind::number, "1000"},
    {"MainWidth", Kind::number, "11685"},
    {"MainHeight", Kind::number, "8085"},
    {"TransferType", Kind::number, "1"},
    {"Passive", Kind::text, "True"},
    {"Timeout", Kind::number, "30"},
    {"RemotePort", Kind::number, "21"},
    {"SchedualHour", Kind::number, "12"},
    {"SchedualMinute", Kind::number, "30"},
    {"SchedualSunday", Kind::number, "0"},
    {"SchedualMonday", Kind::number, "0"},
    {"SchedualTusday", Kind::number, "0"},
    {"SchedualWednesday", Kind::number, "0"},
    {"SchedualThrusday", Kind::number, "0"},
    {"SchedualFriday", Kind::number, "0"},
    {"SchedualSaturday", Kind::number, "0"},
    {"ProcessPriority", Kind::number, "32"},
    {"AutoDial", Kind::number, "1"},
    {"AutoHangUp", Kind::number, "1"},
    {"AutoDialUpConnection", Kind::text, ""},
    {"AutoStartUp", Kind::number, "1"},
    {"BackupMode", Kind::number, "1"},
    {"UniqueBackup", Kind::number, "0"},
    {"CreateZip", Kind::number, "1"},
    {"SplitZip", Kind::number, "0"},
    {"ZipSpanSize", Kind::number, "1024"},
    {"ZipSelfExtract", Kind::number, "0"},
    {"ZipPassword", Kind::text, ""},
    {"ZipCopies", Kind::text, ""},
    {"RunBefore", Kind::text, ""},
    {"RunAfter", Kind::text, ""},
    {"ConnectBefore", Kind::text, ""},
    {"ConnectAfter", Kind::text, ""},
    {"FtpRetryCount", Kind::number, "5"},
    {"ConnectionDelay", Kind::number, "5"},
    {"AsciiExts", Kind::text, kDefaultAsciiExtensions},
    {"LoginAttempts", Kind::number, "0", 0, kMostLoginAttempts},
    {"NamesAsListed", Kind::number, "0", 0, 1},
}};

namespace {

cRegistry settingValue(const std::string& application, const std::string& section, const std::string& key) {
  cRegistry registry;
  registry.ClassKey = HKEY_LOCAL_MACHINE_VALUE;
  registry.SectionKey = "Software\\" + application + "\\" + section;
  registry.ValueKey = key;
  return registry;
}

// A damaged text can have any length; the message about it shows no more than this.
constexpr std::size_t kShownBytes = 200;

}  // namespace

const SettingDefinition& DefinitionOf(std::string_view key) {
  for (const SettingDefinition& setting : kSettings) {
    if (setting.key == key) return setting;
  }
  throw std::logic_error("There is no setting " + std::string(key));
}

std::optional<std::int32_t> SettingNumber(const SettingDefinition& setting, std::string_view stored) {
  const std::optional<double> number = LeadingNumber(stored);
  if (!number) return std::nullopt;
  try {
    const std::int32_t whole = ToLong(*number);
    if (whole < setting.lowest || whole > setting.highest) return std::nullopt;
    return whole;
  } catch (const std::overflow_error&) {
    return std::nullopt;
  }
}

std::string SettingNote(const SettingDefinition& setting, std::string_view stored) {
  if (setting.kind != Kind::number || SettingNumber(setting, stored)) return "";
  std::string wanted = "number";
  if (setting.lowest == 0) wanted += " from 0 to " + std::to_string(setting.highest);
  return "The setting " + std::string(setting.key) + " is stored as \"" +
         PrintableText(ToUtf8(stored.substr(0, kShownBytes))) + "\", which is no " + wanted +
         " that can be used: " + std::string(setting.defaultText) + " is used instead.";
}

std::string ReadSetting(const std::string& application, const std::string& section, const std::string& key,
                        const std::string& defaultText) {
  cRegistry registry = settingValue(application, section, key);
  registry.Default = defaultText;
  const RegistryValue value = registry.Value();
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  // Somebody has stored it as a number.
  if (const auto* number = std::get_if<std::int32_t>(&value)) return std::to_string(*number);
  return defaultText;
}

void WriteSetting(const std::string& application, const std::string& section, const std::string& key,
                  const std::string& text) {
  settingValue(application, section, key).SetValue(text);
}

std::string ReadSetting(const std::string& key, const std::string& defaultText) {
  return ReadSetting(kSettingsApplication, kSettingsSection, key, defaultText);
}

void WriteSetting(const std::string& key, const std::string& text) {
  WriteSetting(kSettingsApplication, kSettingsSection, key, text);
}

}  // namespace quillmoor
