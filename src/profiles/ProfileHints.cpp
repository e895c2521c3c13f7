#include "profiles/ProfileHints.h"

#include <algorithm>

#include "base/Fingerprint.h"
#include "base/LenientNumber.h"
#include "platform/files/LocalPath.h"
#include "profiles/SiteProfileStore.h"

namespace quillmoor {
namespace {

/// The range of a number.
struct NumberRange {
  std::string_view key;
  int highest;  // the lowest is 1
  const char* note;
};
constexpr NumberRange kNumbers[] = {
    {"Port", 65535, "Must be a number from 1 to 65535; "},  // and what will be saved
    {"Timeout", 9999, "Must be a number of seconds from 1 to 9999; 60 will be saved."},
    {"MinData", 65535, "Must be a number from 1 to 65535; 1 will be saved."},
    {"ProxyPort", 65535, "Must be a number from 1 to 65535."}};

bool holdsAny(const std::string& text, const char* characters) {
  return text.find_first_of(characters) != std::string::npos;
}

std::string hostNote(const std::string& host) {
  if (host.empty()) return "Enter the proxy's name or address.";  // a save reports a missing host
  // A single colon precedes a port; several are part of an IPv6 address.
  const bool port = std::count(host.begin(), host.end(), ':') == 1;
  return port || holdsAny(host, "/\\@ \t")
             ? "Enter only the server's name or address, without ftp://, user, port and folder."
             : "";
}

std::string highestPortNote(const SiteProfile& profile) {
  const double typed = Val(profile.MinData), highest = Val(profile.MaxData);
  const double lowest = IsPort(typed) ? typed : 1;  // as it will be saved
  return highest < lowest || !IsPort(highest)
             ? "Must be a number from the lowest port to 65535; the lowest port will be saved."
             : "";
}

bool inUse(const SiteProfile& profile, std::string_view key) {
  if (key == "MinData" || key == "MaxData") return profile.ManualPort == 1;
  return !key.starts_with("Proxy") || profile.ProxyType != 0;
}

/// Unless folder names are kept as listed, a run cuts one backslash off a network path, so that files and
/// archive would be in different places.
std::string saveToNote(const std::string& path, bool namesAsListed, LocalNameRules rules) {
  if (IsNetworkPath(path, rules)) {
    return namesAsListed
               ? ""
               : "No backup is made to a network path. Map it to a drive letter and enter that, or tick in "
                 "the options that folder names are kept as the server lists them.";
  }
  return LocalPath(path).is_absolute() ? "" : "Enter the full path of a folder on this computer.";
}

std::string noteOf(const SiteProfile& profile, std::string_view key, const std::string& text) {
  if (key == "Host" || key == "ProxyHost") return hostNote(text);
  if (key == "RunURL") return AddressNote(text);
  if (key == "MaxData") return highestPortNote(profile);
  if (key == "Certificate" && PlainFingerprint(text).empty())
    return "This is no SHA-256 fingerprint, which has 64 hexadecimal digits.";
  for (const NumberRange& range : kNumbers) {
    if (range.key != key || (Val(text) >= 1 && Val(text) <= range.highest)) continue;
    return key == "Port" ? range.note + std::string(UsualPort(profile.Security)) + " will be saved."
                         : range.note;
  }
  return "";
}

}  // namespace

std::string_view FieldHint(std::string_view key) {
  if (key == "name") return "A name of your own for the site. The backup goes into a folder of that name.";
  if (key == "Folders") return "A folder of the server, such as /www. Everything below it is backed up too.";
  const ProfileField* const field = FieldOf(key);
  return field ? field->hint : "";
}

std::string AddressNote(const std::string& address) {
  const auto scheme = address.find("://");
  const bool web =
      scheme == std::string::npos || address.starts_with("http://") || address.starts_with("https://");
  return web && !holdsAny(address, " \t") ? "" : "Enter an address that begins with http:// or https://.";
}

std::string WhyNoEncryption(const SiteProfile& profile) {
  if (profile.Security == 0) return "";
  if (profile.Security < 0 || static_cast<std::size_t>(profile.Security) >= kSecurityTypes.size())
    return "The stored Security cannot be read and may mean encryption; choose it anew";
  if (PassesTls(profile.ProxyType)) return "";
  return "No encrypted connection (TLS) can pass a proxy of the type \"" +
         TrimmedText(kProxyTypes.at(static_cast<std::size_t>(profile.ProxyType))) + "\"";
}

std::string FieldNote(const SiteProfile& profile, std::string_view key, bool namesAsListed,
                      LocalNameRules rules) {
  if (key == "Security") {
    const std::string why = WhyNoEncryption(profile);
    return why.empty() ? why : why + ".";
  }
  const ProfileField* const field = FieldOf(key);
  if (!field || !field->text()) return "";
  const std::string text = TrimmedText(profile.*field->text());
  const bool needed = profile.ProxyType != 0 && (key == "ProxyHost" || key == "ProxyPort");
  if ((text.empty() && !needed) || !inUse(profile, key)) return "";
  return key == "SaveTo" ? saveToNote(text, namesAsListed, rules) : noteOf(profile, key, text);
}

}  // namespace quillmoor
