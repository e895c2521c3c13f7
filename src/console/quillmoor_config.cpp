// quillmoor-config: edits site profiles and settings from the command line, for a machine without a screen.
#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "connectivity/DialUp.h"
#include "engine/CertificateText.h"
#include "engine/FtpConnection.h"
#include "platform/files/LocalPath.h"
#include "platform/system/CodePage.h"
#include "platform/system/ProgramArguments.h"
#include "platform/system/Terminal.h"
#include "profiles/ApplicationSettings.h"
#include "profiles/ProfileHints.h"
#include "profiles/ProfileText.h"
#include "profiles/SettingsStore.h"
#include "profiles/SiteProfileStore.h"
#include "profiles/mRC4.h"

namespace quillmoor {
namespace {

enum ExitStatus { kDone = 0, kFailed = 1, kUsage = 2 };

constexpr const char* kHelp =
    "Usage: quillmoor-config profile list\n"
    "       quillmoor-config profile show NAME\n"
    "       quillmoor-config profile set NAME KEY=VALUE...\n"
    "       quillmoor-config profile delete NAME\n"
    "       quillmoor-config setting list\n"
    "       quillmoor-config setting get KEY\n"
    "       quillmoor-config setting set KEY VALUE\n"
    "       quillmoor-config dialup list\n"
    "       quillmoor-config certificate HOST [PORT]\n"
    "       quillmoor-config --help | --version\n"
    "\n"
    "Site profiles are in Profiles.ini in this program's folder. Keys:";
constexpr const char* kHelpAfterKeys =
    " Folder\n"
    "Folder may be given several times and replaces the list of remote folders. Password=- and "
    "ProxyPassword=-\n"
    "read a line of standard input; so does the setting ZipPassword. \"dialup list\" names the entries that\n"
    "AutoDialUpConnection can be.\n"
    "Security is 0 for no encryption, 1 for explicit and 2 for implicit TLS. Certificate is the SHA-256\n"
    "fingerprint of a certificate that the system cannot verify and you trust; \"certificate\" shows the "
    "one\n"
    "of a server (implicit TLS on port 990, explicit TLS on any other).\n";

std::string helpText() {
  constexpr std::size_t kWidth = 105;
  std::string help = kHelp;
  for (const ProfileField& field : kProfileFields) {
    const std::size_t begin = help.rfind('\n') + 1;
    help += help.size() + field.key.size() - begin < kWidth ? ' ' : '\n';
    help += field.key;
  }
  return help + kHelpAfterKeys;
}

class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The text itself; raises UsageError for one that the profile file cannot keep.
std::string storable(const std::string& what, const std::string& text) {
  const std::string why = WhyNotStorable(what, text);
  if (!why.empty()) throw UsageError(why);
  return text;
}

/// -1 for any other text than a number from 0 up, written as the program itself writes it.
std::int32_t numberOf(const std::string& text) {
  std::int32_t number = -1;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return std::to_string(number) == text ? std::max(number, -1) : -1;
}

void setField(SiteProfile& profile, std::string_view key, const std::string& value) {
  const ProfileField* const field = FieldOf(key);
  if (!field) throw UsageError("A profile has no key " + std::string(key) + ". Try quillmoor-config --help.");
  if (field->text()) {
    const bool typed = value == "-" && IsSecret(key);
    profile.*field->text() = storable(std::string(key), typed ? ReadSecretLine() : value);
    if (key == "Password") profile.passwordUnreadable = false;
    return;
  }
  const std::int32_t number = numberOf(value);
  if (number < 0 || number > field->largest)
    throw UsageError(std::string(key) + " takes a number from 0 to " + std::to_string(field->largest) + ".");
  if (key == "Security") return ChooseSecurity(profile, number);
  profile.*field->number() = number;
}

/// Raises when something that a run needs is missing or cannot be stored; corrects invalid numbers.
void checkProfile(SiteProfile& profile) {
  const auto require = [](bool condition, const char* what) {
    if (!condition) throw std::runtime_error(what);
  };
  const auto given = [](const std::string& text) { return !TrimmedText(text).empty(); };
  require(given(profile.Host), "the profile needs a Host");
  require(given(profile.UserID), "the profile needs a UserID");
  require(!profile.passwordUnreadable, "the stored password cannot be read: enter it again with Password=-");
  require(given(profile.Password), "the profile needs a Password");
  require(given(profile.Port), "the profile needs a Port");
  require(given(profile.SaveTo), "the profile needs a folder to save to (SaveTo)");
  require(!profile.Folders.empty(), "the profile needs at least one remote folder (Folder=/path)");
  CorrectNumbers(profile);
  for (const std::string& why : {WhyNoEncryption(profile), FindUnstorable(profile).why}) {
    if (!why.empty()) throw UsageError(why);
  }
}

int listProfiles() {
  const std::string file = ProfilesFilePath();
  for (const std::string& name : LoadSitesInfo(file)) {
    const SiteProfile profile = LoadSiteProfile(name, file);
    std::printf("%s  %s@%s:%s  %s\n", name.c_str(), profile.UserID.c_str(), profile.Host.c_str(),
                profile.Port.c_str(), profile.Status == 1 ? "enabled" : "disabled");
  }
  return kDone;
}

void requireProfile(const std::string& name) {
  if (!ProfileExists(name, ProfilesFilePath())) throw std::runtime_error("there is no profile " + name);
}

int showProfile(const std::string& name) {
  requireProfile(name);
  SiteProfile profile = LoadSiteProfile(name, ProfilesFilePath());
  for (const ProfileField& field : kProfileFields) {
    if (!field.text()) continue;
    const std::string& value = profile.*field.text();
    const bool hidden = IsSecret(field.key) && !value.empty();
    std::printf("%s=%s\n", std::string(field.key).c_str(), hidden ? "(hidden)" : value.c_str());
  }
  for (const ProfileField& field : kProfileFields) {
    if (field.number()) std::printf("%s=%d\n", std::string(field.key).c_str(), profile.*field.number());
  }
  for (const std::string& folder : profile.Folders) std::printf("Folder=%s\n", folder.c_str());
  return kDone;
}

int setProfile(const std::string& given, std::vector<std::string> assignments) {
  const std::string name = storable("A name", TrimmedText(given));
  if (name.empty()) throw UsageError("A profile needs a name.");
  const std::string file = ProfilesFilePath();
  SiteProfile profile = ProfileExists(name, file) ? LoadSiteProfile(name, file) : LoadSiteProfile("", file);
  profile.name = name;
  std::vector<std::string> folders;
  // Security changes the port, unless that is given too.
  std::stable_partition(assignments.begin(), assignments.end(),
                        [](const std::string& each) { return each.starts_with("Security="); });
  for (const std::string& assignment : assignments) {
    const auto equals = assignment.find('=');
    if (equals == std::string::npos) throw UsageError("\"" + assignment + "\" is not KEY=VALUE.");
    const std::string key = assignment.substr(0, equals);
    const std::string value = assignment.substr(equals + 1);
    if (key == "Folder") {
      const std::string folder = TrimmedText(value);
      const std::string why = WhyNoFolder(key, folder);
      if (!why.empty()) throw UsageError(why);
      if (std::find(folders.begin(), folders.end(), folder) == folders.end()) folders.push_back(folder);
    } else {
      setField(profile, key, value);
    }
  }
  if (!folders.empty()) profile.Folders = folders;
  checkProfile(profile);
  if (!SaveSiteProfile(profile, file)) throw std::runtime_error("cannot write " + file);
  if (IsNetworkPath(profile.SaveTo)) {
    const std::string note = FieldNote(profile, "SaveTo", LoadApplicationSettings().NamesAsListed == 1);
    if (!note.empty()) std::fprintf(stderr, "quillmoor-config: %s\n", note.c_str());
  }
  return kDone;
}

int deleteProfile(const std::string& name) {
  requireProfile(name);
  if (!DeleteSiteProfile(name, ProfilesFilePath()))
    throw std::runtime_error("cannot write " + ProfilesFilePath());
  return kDone;
}

const SettingDefinition& settingOf(const std::string& key) {
  try {
    return DefinitionOf(key);
  } catch (const std::logic_error& error) {
    throw UsageError(error.what() + std::string(". See quillmoor-config setting list."));
  }
}

/// The stored value. Prints a note when the programs cannot use it.
std::string shownSetting(const SettingDefinition& setting) {
  std::string value = ReadSetting(std::string(setting.key), std::string(setting.defaultText));
  const std::string note = SettingNote(setting, value);
  if (!note.empty()) std::fprintf(stderr, "quillmoor-config: %s\n", note.c_str());
  return IsSecret(setting.key) && !value.empty() ? "(hidden)" : value;
}

int listSettings() {
  for (const SettingDefinition& setting : kSettings) {
    std::printf("%s=%s\n", std::string(setting.key).c_str(), shownSetting(setting).c_str());
  }
  return kDone;
}

int setSetting(const std::string& key, const std::string& value) {
  const SettingDefinition& setting = settingOf(key);
  if (setting.kind == SettingDefinition::Kind::number) {
    std::int32_t number = 0;
    const auto [rest, error] = std::from_chars(value.data(), value.data() + value.size(), number);
    if (error != std::errc() || rest != value.data() + value.size())
      throw UsageError(key + " takes a number.");
    if (number < setting.lowest || number > setting.highest) {
      throw UsageError(key + " takes a number from " + std::to_string(setting.lowest) + " to " +
                       std::to_string(setting.highest) + ".");
    }
  }
  if (!IsSecret(key)) {
    WriteSetting(key, value);
    return kDone;
  }
  const std::string secret = value == "-" ? ReadSecretLine() : value;
  // Every other character would be stored as "?", and the password would open no archive.
  if (!FitsAnsi(secret)) throw UsageError(key + " takes characters of the ANSI code page only.");
  WriteSetting(key, mRC4::Encipher(secret));
  return kDone;
}

int listDialUpEntries() {
  for (const std::string& name : MakeDialUp([] {})->Entries()) std::printf("%s\n", name.c_str());
  return kDone;
}

int showCertificate(const std::string& host, const std::string& portText) {
  const std::int32_t port = numberOf(portText);
  if (host.empty() || !IsPort(port)) throw UsageError("Give a host, and a port from 1 to 65535.");
  return std::fputs(CertificateText(ReadCertificate(host, port)).c_str(), stdout) < 0 ? kFailed : kDone;
}

int execute(const std::vector<std::string>& arguments) {
  const auto is = [&](std::size_t count, std::string_view noun, std::string_view verb) {
    return arguments.size() >= 2 && arguments.size() == count && arguments[0] == noun && arguments[1] == verb;
  };
  if (arguments == std::vector<std::string>{"--help"})
    return std::fputs(helpText().c_str(), stdout) < 0 ? kFailed : kDone;
  if (arguments == std::vector<std::string>{"--version"}) {
    return std::puts("quillmoor-config " QUILLMOOR_VERSION) < 0 ? kFailed : kDone;
  }
  if (is(2, "profile", "list")) return listProfiles();
  if (is(3, "profile", "show")) return showProfile(arguments[2]);
  if (is(3, "profile", "delete")) return deleteProfile(arguments[2]);
  if (arguments.size() >= 4 && is(arguments.size(), "profile", "set")) {
    return setProfile(arguments[2], {arguments.begin() + 3, arguments.end()});
  }
  if (is(2, "setting", "list")) return listSettings();
  if (is(3, "setting", "get"))
    return std::puts(shownSetting(settingOf(arguments[2])).c_str()) < 0 ? kFailed : kDone;
  if (is(4, "setting", "set")) return setSetting(arguments[2], arguments[3]);
  if (is(2, "dialup", "list")) return listDialUpEntries();
  if ((arguments.size() == 2 || arguments.size() == 3) && arguments[0] == "certificate")
    return showCertificate(arguments[1], arguments.size() == 3 ? arguments[2] : UsualPort(kExplicitTls));
  throw UsageError("Try quillmoor-config --help.");
}

int main(const std::vector<std::string>& arguments) {
  prepareTerminal();
  try {
    return execute(arguments);
  } catch (const UsageError& error) {
    std::fprintf(stderr, "quillmoor-config: %s\n", error.what());
    return kUsage;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "quillmoor-config: %s\n", error.what());
    return kFailed;
  }
}

}  // namespace
}  // namespace quillmoor

int main(int argc, char** argv) {
  return quillmoor::main(quillmoor::ProgramArguments(argc, argv));
}
