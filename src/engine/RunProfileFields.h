// The fields of a site profile as a run holds them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quillmoor {

/// Named after the keys of the profile's section. Differs from the editor's SiteProfile: numbers are numbers
/// here, the password is in clear.
struct RunProfileFields {
  std::string Host;
  std::string UserID;
  std::string Password;  // "" when the stored one cannot be deciphered
  std::string Port;      // text of a number
  std::string Account;
  std::string SaveTo;  // ends with a separator once the run has begun on the profile
  std::string RunURL;
  std::string RunProgram;
  std::int32_t Status = 0;  // only 1 is enabled
  std::string DefaultDir;
  std::int32_t Timeout = 0;  // seconds
  bool PASV = false;
  bool ManualPort = false;
  std::int32_t MinData = 0;  // read and kept; no data connection ever uses these two
  std::int32_t MaxData = 0;
  std::int32_t ProxyType = 0;
  std::string ProxyHost;
  std::int32_t ProxyPort = 0;
  std::string ProxyUsername;
  std::string ProxyPassword;  // stored in clear
  std::vector<std::string> Folders;

  /// Why the profile cannot be run, as a sentence without its full stop; empty when it can.
  std::string unreadable;
};

/// Reads the section `profileId`. Raises nothing: a damaged value is told in `unreadable`, a missing one is
/// "" or 0.
RunProfileFields LoadProfileForRun(const std::string& profileId, const std::string& profilesFile);

}  // namespace quillmoor
