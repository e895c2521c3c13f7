#include "profiles/SiteProfileStore.h"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <stdexcept>
#include <utility>

#include "base/Fingerprint.h"
#include "base/LenientNumber.h"
#include "base/SplitText.h"
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

/// The section name of the profile, as spelt in the file: systems differ in how they fold case when they look
/// up a section. std::nullopt when there is none.
std::optional<std::string> storedName(const std::string& name, const std::string& file) {
  const std::string wanted = TrimmedText(name);
  for (std::string& stored : mIni::ListSections(file)) {
    if (SameName(stored, wanted)) return std::move(stored);
  }
  return std::nullopt;
}

/// Only the first of several sections of a name is read; deleting it alone would reveal the next.
bool deleteSections(const std::string& name, const std::string& file) {
  for (std::size_t most = mIni::ListSections(file).size(); most > 0; --most) {
    const auto stored = storedName(name, file);
    if (!stored) return true;
    if (!mIni::DeleteSection(*stored, file)) return false;
  }
  return true;
}

std::string textOf(const SiteProfile& profile, const ProfileField& field) {
  if (field.number()) return std::to_string(profile.*field.number());
  const std::string& text = profile.*field.text();
  return field.kind == ProfileField::Kind::password ? mRC4::Encipher(text) : text;
}

bool writeSection(const SiteProfile& profile, const std::string& file) {
  if (!deleteSections(profile.name, file)) return false;
  bool written = true;
  const auto write = [&](std::string_view key, const std::string& value) {
    written = written && mIni::WriteValue(profile.name, std::string(key), value, file);
  };
  write("ID", profile.ID);
  const auto writeFields = [&](ProfileField::Since since) {
    for (const ProfileField& field : kProfileFields) {
      const auto stored = field.since == since ? StoredText(profile, field) : std::nullopt;
      if (stored) write(field.key, *stored);
    }
  };
  writeFields(ProfileField::Since::first);
  write("Folders", JoinFolders(profile.Folders));
  writeFields(ProfileField::Since::later);
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

std::optional<std::string> StoredText(const SiteProfile& profile, const ProfileField& field) {
  std::string text = textOf(profile, field);
  if (field.since == ProfileField::Since::later && text == textOf(SiteProfile(), field)) return std::nullopt;
  return text;
}

void TakeStored(SiteProfile& profile, const ProfileField& field, const std::string& stored) {
  if (field.since == ProfileField::Since::later && stored.empty()) return;
  std::int32_t number = 0;
  if (field.kind == ProfileField::Kind::number) {
    try {
      number = ToLong(stored);
      if (field.text() && number > field.largest) profile.numberTooLarge = field.key;
    } catch (const std::overflow_error&) {
      profile.numberTooLarge = field.key;
    }
  }
  if (field.number()) {
    // Half a number must not pass for one: it may have meant encryption.
    const bool half = field.since == ProfileField::Since::later && std::to_string(number) != stored;
    profile.*field.number() = half ? -1 : number;
  } else if (field.kind == ProfileField::Kind::password) {
    try {
      profile.*field.text() = mRC4::Decipher(stored);
    } catch (const mBase64::DecodeError&) {
      profile.*field.text() = "";
      profile.passwordUnreadable = true;
    }
  } else {
    profile.*field.text() = stored;
  }
}

SiteProfile LoadProfileForRun(const std::string& section, const std::string& file) {
  SiteProfile profile;
  const auto stored = [&](std::string_view key) { return mIni::ReadValue(section, std::string(key), file); };
  profile.name = section;
  profile.ID = stored("ID");
  for (const ProfileField& field : kProfileFields) TakeStored(profile, field, stored(field.key));
  profile.Folders = SplitFolders(stored("Folders"));
  return profile;
}

SiteProfile LoadSiteProfile(const std::string& name, const std::string& file) {
  if (name.empty()) return {};
  SiteProfile profile = LoadProfileForRun(storedName(name, file).value_or(name), file);
  profile.name = name;
  for (const ProfileField& field : kProfileFields) {
    if (!field.number()) continue;
    std::int32_t& number = profile.*field.number();
    if (number == static_cast<std::int16_t>(number)) continue;  // no valid value is that large
    number = field.since == ProfileField::Since::later ? -1 : 0;
  }
  return profile;
}

bool SaveSiteProfile(SiteProfile& profile, const std::string& file, LocalDateTime now) {
  if (profile.ID.empty()) profile.ID = idOf(now);
  for (const ProfileField& field : kProfileFields) {
    const bool fingerprint = field.kind == ProfileField::Kind::fingerprint;
    if (!fingerprint && field.kind != ProfileField::Kind::trimmed) continue;
    std::string& text = profile.*field.text();
    const std::string plain = fingerprint ? PlainFingerprint(text) : "";
    text = plain.empty() ? TrimmedText(text) : plain;
  }
  // The section is removed and written again at the end of the file; a program killed in between must not
  // lose the profile.
  return mIni::EditWhole(file, [&](const std::string& copy) { return writeSection(profile, copy); });
}

void ChooseSecurity(SiteProfile& profile, std::int32_t security) {
  if (TrimmedText(profile.Port) == UsualPort(profile.Security)) profile.Port = UsualPort(security);
  profile.Security = security;
}

void CorrectNumbers(SiteProfile& profile) {
  if (!IsPort(Val(profile.Port))) profile.Port = UsualPort(profile.Security);
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
  return JoinText(folders, kFolderSeparator);
}

std::vector<std::string> SplitFolders(std::string_view stored) {
  std::vector<std::string> folders;
  if (stored.empty()) return folders;
  for (std::string& folder : SplitText(stored, kFolderSeparator)) {
    if (std::find(folders.begin(), folders.end(), folder) == folders.end())
      folders.push_back(std::move(folder));
  }
  return folders;
}

}  // namespace quillmoor
