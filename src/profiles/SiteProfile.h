// A site profile: one FTP site to back up, as the editor shows it and the profile file keeps it.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/system/ProgramFolder.h"

namespace quillmoor {

/// Texts of the proxy types; a profile stores the position.
inline constexpr std::array<const char*, 8> kProxyTypes = {
    "None", "Socks V4", "Socks V5", "SITE Hostname ", "USER Logon", "USER No Logon ", "OPEN", "Pipe"};

/// Fields named after their keys, with the defaults of a new profile. What is text here although it holds a
/// number is the text of an edit box.
struct SiteProfile {
  std::string name;  // of the section; unique without regard to case
  std::string ID;    // "yyyyMMddhhmmss" of the first save, for ever
  std::int16_t Status = 1;
  std::string Host;
  std::string UserID;
  std::string Password;  // in clear
  std::string Port = "21";
  std::string Account;
  std::string SaveTo = ProgramFolder();
  std::string RunURL;
  std::string RunProgram;
  std::string Timeout = "60";  // seconds
  std::int16_t PASV = 1;
  std::int16_t ManualPort = 0;
  std::string MinData;
  std::string MaxData;
  std::int16_t ProxyType = 0;  // a position in kProxyTypes
  std::string ProxyHost;
  std::string ProxyPort;
  std::string ProxyUsername;
  std::string ProxyPassword;  // stored in clear, on purpose
  std::string DefaultDir;
  std::vector<std::string> Folders;

  /// The stored password could not be deciphered and shows as "": it must be typed anew before a save.
  bool passwordUnreadable = false;
};

}  // namespace quillmoor
