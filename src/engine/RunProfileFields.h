// The fields of a site profile as a run uses them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quillmoor {

/// Named after the keys of the profile's section. Unlike in the editor's SiteProfile, numbers are parsed and
/// the password is in clear text.
struct RunProfileFields {
  std::string Host;
  std::string UserID;
  std::string Password;  // "" when it cannot be deciphered
  std::string Port;      // a number as text
  std::string Account;
  std::string SaveTo;  // ends with a separator once the profile has begun
  std::string RunURL;
  std::string RunProgram;
  std::int32_t Status = 0;  // only 1 is enabled
  std::string DefaultDir;
  std::int32_t Timeout = 0;  // seconds
  bool PASV = false;
  bool ManualPort = false;
  std::int32_t MinData = 0;  // these two are read, but no data connection uses them
  std::int32_t MaxData = 0;
  std::int32_t ProxyType = 0;
  std::string ProxyHost;
  std::int32_t ProxyPort = 0;
  std::string ProxyUsername;
  std::string ProxyPassword;  // stored in clear text
  std::vector<std::string> Folders;

  /// Why the profile cannot be run, as a sentence without a full stop; "" when it can.
  std::string unreadable;
};

/// Reads the section `profileId`. Raises nothing: an invalid value is reported in `unreadable`, a missing one
/// is "" or 0.
RunProfileFields LoadProfileForRun(const std::string& profileId, const std::string& profilesFile);

}  // namespace quillmoor
