#include "profiles/SiteProfileStore.h"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <stdexcept>

#include "base/LenientNumber.h"
#include "profiles/NameOrder.h"
#include "profiles/mBase64.h"
#include "profiles/mIni.h"
#include "profiles/mRC4.h"

namespace quillmoor {
namespace {

constexpr std::string_view kFolderSeparator = "~|~";

std::string idOf(LocalDateTime time) {
  const auto t = SplitLocalDateTime(time);
  char text[32];
  std::snprintf(text, sizeof text, "%04d%02d%02d%02d%02d%02d", t.year, t.month, t.day, t.hour, t.minute,
                t.second);
  return text;
}

std::int16_t flagOf(const std::string& text) {
  try {
    return ToInteger(Val(text));
  } catch (const std::overflow_error&) {
    return 0;  // no flag is that large
  }
}

/// The name under which the file has the profile: systems differ in which letters they take for the same when
/// they look a section up. Nothing when it has none.
std::optional<std::string> storedName(const std::string& name, const std::string& file) {
  const std::string wanted = TrimmedText(name);
  for (std::string& stored : mIni::ListSections(file)) {
    if (SameName(stored, wanted)) return std::move(stored);
  }
  return std::nullopt;
}

/// Of several sections of one name only the first is ever seen, but each would come to light in its turn.
bool deleteSections(const std::string& name, const std::string& file) {
  for (std::size_t most = mIni::ListSections(file).size(); most > 0; --most) {
    const auto stored = storedName(name, file);
    if (!stored) return true;
    if (!mIni::DeleteSection(*stored, file)) return false;
  }
  return true;
}

bool writeSection(const SiteProfile& profile, const std::string& file) {
  if (!deleteSections(profile.name, file)) return false;
  bool written = true;
  const auto write = [&](const char* key, const std::string& value) {
    written = written && mIni::WriteValue(profile.name, key, value, file);
  };
  write("ID", profile.ID);
  write("Status", std::to_string(profile.Status));
  write("Host", profile.Host);
  write("UserID", profile.UserID);
  write("Password", mRC4::Encipher(profile.Password));
  write("Port", profile.Port);
  write("Account", profile.Account);
  write("SaveTo", profile.SaveTo);
  write("RunURL", profile.RunURL);
  write("RunProgram", profile.RunProgram);
  write("Timeout", profile.Timeout);
  write("PASV", std::to_string(profile.PASV));
  write("ManualPort", std::to_string(profile.ManualPort));
  write("MinData", profile.MinData);
  write("MaxData", profile.MaxData);
  write("ProxyType", std::to_string(profile.ProxyType));
  write("ProxyHost", profile.ProxyHost);
  write("ProxyPort", profile.ProxyPort);
  write("ProxyUsername", profile.ProxyUsername);
  write("ProxyPassword", profile.ProxyPassword);
  write("DefaultDir", profile.DefaultDir);
  write("Folders", JoinFolders(profile.Folders));
  return written;
}

}  // namespace

std::string ProfilesFilePath() {
  return ProgramFolder() + "Profiles.ini";
}

std::vector<std::string> LoadSitesInfo(const std::string& file) {
  std::vector<std::string> names = mIni::ListSections(file);
  std::erase(names, "");
  SortNames(names);
  return names;
}

std::string TrimmedText(const std::string& text) {
  const auto first = text.find_first_not_of(" \t");
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

bool IsPort(double number) {
  return number >= 1 && number <= 65535;
}

bool ProfileExists(const std::string& name, const std::string& file) {
  return storedName(name, file).has_value();
}

SiteProfile LoadSiteProfile(const std::string& name, const std::string& file) {
  SiteProfile profile;
  if (name.empty()) return profile;
  const std::string section = storedName(name, file).value_or(name);
  const auto text = [&](const char* key) { return mIni::ReadValue(section, key, file); };
  const auto flag = [&](const char* key) { return flagOf(text(key)); };
  profile.name = name;
  profile.ID = text("ID");
  profile.Status = flag("Status");
  profile.Host = text("Host");
  profile.UserID = text("UserID");
  try {
    profile.Password = mRC4::Decipher(text("Password"));
  } catch (const mBase64::DecodeError&) {
    profile.passwordUnreadable = true;
  }
  profile.Port = text("Port");
  profile.Account = text("Account");
  profile.SaveTo = text("SaveTo");
  profile.RunURL = text("RunURL");
  profile.RunProgram = text("RunProgram");
  profile.Timeout = text("Timeout");
  profile.PASV = flag("PASV");
  profile.ManualPort = flag("ManualPort");
  profile.MinData = text("MinData");
  profile.MaxData = text("MaxData");
  profile.ProxyType = flag("ProxyType");
  profile.ProxyHost = text("ProxyHost");
  profile.ProxyPort = text("ProxyPort");
  profile.ProxyUsername = text("ProxyUsername");
  profile.ProxyPassword = text("ProxyPassword");
  profile.DefaultDir = text("DefaultDir");
  for (std::string& folder : SplitFolders(text("Folders"))) {
    const bool known =
        std::find(profile.Folders.begin(), profile.Folders.end(), folder) != profile.Folders.end();
    if (!known) profile.Folders.push_back(std::move(folder));
  }
  return profile;
}

bool SaveSiteProfile(SiteProfile& profile, const std::string& file, LocalDateTime now) {
  if (profile.ID.empty()) profile.ID = idOf(now);
  for (const auto text : {&SiteProfile::Host, &SiteProfile::ProxyHost, &SiteProfile::DefaultDir,
                          &SiteProfile::RunURL, &SiteProfile::RunProgram})
    profile.*text = TrimmedText(profile.*text);
  // The section is taken out and written anew, at the end of the file; a program that is killed meanwhile
  // must not cost the user his profile.
  return mIni::EditWhole(file, [&](const std::string& copy) { return writeSection(profile, copy); });
}

void CorrectNumbers(SiteProfile& profile) {
  if (!IsPort(Val(profile.Port))) profile.Port = "21";
  if (profile.ManualPort == 1) {
    if (!IsPort(Val(profile.MinData))) profile.MinData = "1";
    const double highest = Val(profile.MaxData);
    if (Val(profile.MinData) > highest || highest > 65535) profile.MaxData = profile.MinData;
  }
  const double timeout = Val(profile.Timeout);
  if (timeout < 1 || timeout > 9999) profile.Timeout = "60";
}

bool DeleteSiteProfile(const std::string& name, const std::string& file) {
  return mIni::EditWhole(file, [&](const std::string& copy) { return deleteSections(name, copy); });
}

std::string JoinFolders(const std::vector<std::string>& folders) {
  std::string stored;
  for (const std::string& folder : folders) {
    if (&folder != &folders.front()) stored += kFolderSeparator;
    stored += folder;
  }
  return stored;
}

std::vector<std::string> SplitFolders(std::string_view stored) {
  std::vector<std::string> folders;
  if (stored.empty()) return folders;
  for (;;) {
    const std::size_t end = stored.find(kFolderSeparator);
    const std::string_view folder = stored.substr(0, end);
    if (std::find(folders.begin(), folders.end(), folder) == folders.end()) folders.emplace_back(folder);
    if (end == std::string_view::npos) return folders;
    stored.remove_prefix(end + kFolderSeparator.size());
  }
}

}  // namespace quillmoor
