#include "profiles/ProfileText.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "base/Fingerprint.h"
#include "platform/ini/PrivateProfile.h"
#include "platform/system/CodePage.h"
#include "profiles/SiteProfileStore.h"

namespace quillmoor {
namespace {

/// A read needs room for a terminating zero, and a value may need a pair of quotes.
constexpr std::size_t kLongestValue = kPrivateProfileBuffer - 3;

}  // namespace

bool IsSecret(std::string_view key) {
  return key.ends_with("Password");
}

std::string WhyNotStorable(const std::string& what, const std::string& text) {
  const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20; };
  if (std::any_of(text.begin(), text.end(), isControl))
    return what + " cannot hold a line break or another control character.";
  if (!FitsAnsi(text)) {
    return what + " holds a character that the profile file cannot keep" +
           (IsSecret(what) ? "." : ": " + text);
  }
  if (ToAnsi(text).size() > kLongestValue) {
    return what + " is too long for the profile file, which keeps " + std::to_string(kLongestValue) +
           " characters.";
  }
  return "";
}

std::string WhyNoFolder(const std::string& what, const std::string& folder) {
  if (folder.empty() || SplitFolders(folder) != std::vector{folder})
    return "\"" + folder + "\" cannot be a folder.";
  return WhyNotStorable(what, folder);
}

UnstorableField FindUnstorable(const SiteProfile& profile) {
  std::string why = WhyNotStorable("The name", profile.name);
  if (!why.empty()) return {"name", why};
  for (const ProfileField& field : kProfileFields) {
    const auto stored = field.text() ? StoredText(profile, field) : std::nullopt;
    if (!stored) continue;
    why = WhyNotStorable(std::string(field.key), profile.*field.text());
    if (why.empty()) why = WhyNotStorable(std::string(field.key), *stored);
    const bool fingerprint = field.kind == ProfileField::Kind::fingerprint && !TrimmedText(*stored).empty();
    if (why.empty() && fingerprint && PlainFingerprint(*stored).empty())
      why = std::string(field.key) + " takes the 64 hexadecimal digits of a SHA-256 fingerprint.";
    if (!why.empty()) return {field.key, why};
  }
  for (const std::string& folder : profile.Folders) {
    why = WhyNoFolder("A folder", folder);
    if (!why.empty()) return {"Folders", why};
  }
  why = WhyNotStorable("The list of folders", JoinFolders(profile.Folders));
  return {why.empty() ? "" : "Folders", why};
}

}  // namespace quillmoor
