#include "engine/RunProfileFields.h"

#include <stdexcept>

#include "base/LenientNumber.h"
#include "profiles/SiteProfile.h"
#include "profiles/SiteProfileStore.h"
#include "profiles/mBase64.h"
#include "profiles/mIni.h"
#include "profiles/mRC4.h"

namespace quillmoor {
namespace {

// In seconds; in milliseconds a longer one exceeds 32 bits, and every login would fail, without end.
constexpr std::int32_t kLongestTimeout = 2'147'483;

/// Why every login would fail before a byte is sent, and so be retried without end; "" if it would not.
std::string whyNoLogin(const RunProfileFields& fields) {
  if (fields.Host.empty()) return "The host is missing";
  const std::int32_t port = ToLong(fields.Port);
  if (!IsPort(port)) return fields.Port + " is not a valid port number";
  if (fields.ProxyType == 0) return "";
  if (fields.ProxyType < 0 || static_cast<std::size_t>(fields.ProxyType) >= kProxyTypes.size())
    return "Unknown proxy type " + std::to_string(fields.ProxyType);
  if (fields.ProxyHost.empty()) return "The proxy's host is missing";
  if (!IsPort(fields.ProxyPort))
    return std::to_string(fields.ProxyPort) + " is not a valid port number for the proxy";
  return "";
}

}  // namespace

RunProfileFields LoadProfileForRun(const std::string& profileId, const std::string& profilesFile) {
  RunProfileFields fields;
  const auto text = [&](const char* key) { return mIni::ReadValue(profileId, key, profilesFile); };
  const auto number = [&](const char* key) {
    try {
      return ToLong(text(key));
    } catch (const std::overflow_error&) {
      fields.unreadable = std::string("The number ") + key + " is too large";
      return std::int32_t{0};
    }
  };
  fields.Host = text("Host");
  fields.UserID = text("UserID");
  try {
    fields.Password = mRC4::Decipher(text("Password"));
  } catch (const mBase64::DecodeError&) {
    // The server would refuse every login, without end.
    fields.unreadable = "The stored password cannot be deciphered; enter it again";
  }
  fields.Port = std::to_string(number("Port"));
  fields.Account = text("Account");
  fields.SaveTo = text("SaveTo");
  fields.RunURL = text("RunURL");
  fields.RunProgram = text("RunProgram");
  fields.Status = number("Status");
  fields.DefaultDir = text("DefaultDir");
  fields.Timeout = number("Timeout");
  if (fields.Timeout > kLongestTimeout) fields.unreadable = "The number Timeout is too large";
  fields.PASV = number("PASV") != 0;
  fields.ManualPort = number("ManualPort") != 0;
  const std::string runnable = fields.unreadable;
  fields.MinData = number("MinData");
  fields.MaxData = number("MaxData");
  fields.unreadable = runnable;  // runs do not use these two
  fields.ProxyType = number("ProxyType");
  fields.ProxyHost = text("ProxyHost");
  fields.ProxyPort = number("ProxyPort");
  fields.ProxyUsername = text("ProxyUsername");
  fields.ProxyPassword = text("ProxyPassword");
  fields.Folders = SplitFolders(text("Folders"));
  if (fields.unreadable.empty()) fields.unreadable = whyNoLogin(fields);
  return fields;
}

}  // namespace quillmoor
