#include "profiles/ProfileHints.h"

#include <algorithm>

#include "base/LenientNumber.h"
#include "platform/files/LocalPath.h"
#include "profiles/ProfileText.h"
#include "profiles/SiteProfileStore.h"

namespace quillmoor {
namespace {

struct Hint {
  std::string_view key, text;
};
constexpr Hint kHints[] = {
    {"name", "A name of your own for the site. The backup goes into a folder of that name."},
    {"Status", "Backup runs take the profile. Without the tick it is left out, and nothing is lost."},
    {"Host", "The server's name or address, such as ftp.example.org, without ftp:// and without a folder."},
    {"Port", "A number from 1 to 65535, as a rule 21."},
    {"UserID", "The name you log in with at the server."},
    {"Password", "The password you log in with at the server. It is stored enciphered."},
    {"Account", "Only for servers that ask for an account beside the user; otherwise empty."},
    {"SaveTo", "The folder on this computer that keeps the backups."},
    {"Timeout", "Seconds that one step of the connection may take: a number from 1 to 9999, as a rule 60."},
    {"PASV", "This computer opens every connection, which gets through nearly all firewalls."},
    {"DefaultDir", "The server's folder to go to after the login. Empty: the one that the login leads to."},
    {"ManualPort", "The range is kept with the profile, but data connections use any free port."},
    {"MinData", "The lowest port: a number from 1 to 65535."},
    {"MaxData", "The highest port: a number from the lowest to 65535."},
    {"ProxyType", "How FTP leaves your network. None: the server is reached directly."},
    {"ProxyHost", "The proxy's name or address."},
    {"ProxyPort", "A number from 1 to 65535: who runs the proxy knows it."},
    {"ProxyUsername", "The name at the proxy. Empty if it asks for none."},
    {"ProxyPassword", "The password at the proxy. It is stored as you type it, not enciphered."},
    {"RunProgram", "A program or document that is opened before the run connects to the site."},
    {"RunURL", "A web address that is called before the run connects to the site."},
    {"Folders", "A folder of the server, such as /www. Everything below it is backed up too."}};

/// A box for a number.
struct NumberRange {
  std::string_view key;
  int highest;  // the lowest is 1
  const char* note;
};
constexpr NumberRange kNumbers[] = {
    {"Port", 65535, "A number from 1 to 65535 is wanted; as it is, 21 will be saved."},
    {"Timeout", 9999, "Seconds, a number from 1 to 9999, are wanted; as it is, 60 will be saved."},
    {"MinData", 65535, "A number from 1 to 65535 is wanted; as it is, 1 will be saved."},
    {"ProxyPort", 65535, "A number from 1 to 65535 is wanted."}};

bool holdsAny(const std::string& text, const char* characters) {
  return text.find_first_of(characters) != std::string::npos;
}

std::string hostNote(const std::string& host) {
  if (host.empty()) return "The proxy's name or address is wanted.";  // a save tells of another's
  // A single colon stands before a port; more of them are an address of IPv6.
  const bool port = std::count(host.begin(), host.end(), ':') == 1;
  return port || holdsAny(host, "/\\@ \t")
             ? "Only the server's name or address is wanted: no ftp://, no user, no port, no folder."
             : "";
}

std::string highestPortNote(const SiteProfile& profile) {
  const double typed = Val(profile.MinData), highest = Val(profile.MaxData);
  const double lowest = IsPort(typed) ? typed : 1;  // as it will be saved
  return highest < lowest || !IsPort(highest)
             ? "A number from the lowest port to 65535 is wanted; as it is, the lowest will be saved."
             : "";
}

bool inUse(const SiteProfile& profile, std::string_view key) {
  if (key == "MinData" || key == "MaxData") return profile.ManualPort == 1;
  return !key.starts_with("Proxy") || profile.ProxyType != 0;
}

/// A run cuts one backslash off a network path, unless folder names are kept: files and archive would then
/// lie in different places.
std::string saveToNote(const std::string& path, bool namesAsListed, LocalNameRules rules) {
  if (IsNetworkPath(path, rules)) {
    return namesAsListed
               ? ""
               : "No backup is made to a network path. Give it a drive letter and enter that, or tick in "
                 "the options that names of folders are kept as the server lists them.";
  }
  return LocalPath(path).is_absolute() ? "" : "The whole path of a folder of this computer is wanted.";
}

std::string noteOf(const SiteProfile& profile, std::string_view key, const std::string& text) {
  if (key == "Host" || key == "ProxyHost") return hostNote(text);
  if (key == "RunURL") return AddressNote(text);
  if (key == "MaxData") return highestPortNote(profile);
  for (const NumberRange& range : kNumbers) {
    if (range.key == key && !(Val(text) >= 1 && Val(text) <= range.highest)) return range.note;
  }
  return "";
}

}  // namespace

std::string_view FieldHint(std::string_view key) {
  const auto* const found =
      std::find_if(std::begin(kHints), std::end(kHints), [&](const Hint& hint) { return hint.key == key; });
  return found == std::end(kHints) ? "" : found->text;
}

std::string AddressNote(const std::string& address) {
  const auto scheme = address.find("://");
  const bool web =
      scheme == std::string::npos || address.starts_with("http://") || address.starts_with("https://");
  return web && !holdsAny(address, " \t") ? "" : "An address with http:// or https:// is wanted.";
}

std::string FieldNote(const SiteProfile& profile, std::string_view key, bool namesAsListed,
                      LocalNameRules rules) {
  for (const ProfileText& field : kProfileTexts) {
    if (field.key != key) continue;
    const std::string text = TrimmedText(profile.*field.field);
    const bool needed = profile.ProxyType != 0 && (key == "ProxyHost" || key == "ProxyPort");
    if ((text.empty() && !needed) || !inUse(profile, key)) return "";
    return key == "SaveTo" ? saveToNote(text, namesAsListed, rules) : noteOf(profile, key, text);
  }
  return "";
}

}  // namespace quillmoor
