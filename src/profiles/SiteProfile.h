// A site profile: one FTP site to back up. What the profile file keeps of it, the form shows, the command
// line sets and a run and the remote browser log in with.
#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/system/ProgramFolder.h"

namespace quillmoor {

/// Texts of the proxy types; a profile stores the position.
inline constexpr std::array<const char*, 8> kProxyTypes = {
    "None", "Socks V4", "Socks V5", "SITE Hostname ", "USER Logon", "USER No Logon ", "OPEN", "Pipe"};

/// Texts of the kinds of encryption; a profile stores the position.
inline constexpr std::array<const char*, 3> kSecurityTypes = {"None", "TLS, explicit (usual)",
                                                              "TLS, implicit (port 990)"};
inline constexpr std::int32_t kExplicitTls = 1, kImplicitTls = 2;

/// The port that servers usually listen on for this kind of encryption.
constexpr const char* UsualPort(std::int32_t security) {
  return security == kImplicitTls ? "990" : "21";
}

/// Whether an encrypted connection can pass a proxy of this type, a position in kProxyTypes. The others speak
/// FTP themselves and would have to read it.
constexpr bool PassesTls(std::int32_t proxyType) {
  return proxyType < 3 || proxyType > 6;
}

/// Fields named after their keys, with the defaults of a new profile. What is text here although it holds a
/// number is the text of an edit box.
struct SiteProfile {
  std::string name;         // of the section; unique without regard to case
  std::string ID;           // "yyyyMMddhhmmss" of the first save; never changes
  std::int32_t Status = 1;  // only 1 is enabled
  std::string Host;
  std::string UserID;
  std::string Password;  // in clear
  std::string Port = "21";
  std::string Account;
  std::string SaveTo = ProgramFolder();  // ends with a separator once a run has begun on the profile
  std::string RunURL;
  std::string RunProgram;
  std::string Timeout = "60";  // seconds
  std::int32_t PASV = 1;
  std::int32_t ManualPort = 0;
  std::string MinData;  // no data connection ever uses these two
  std::string MaxData;
  std::int32_t ProxyType = 0;  // a position in kProxyTypes
  std::string ProxyHost;
  std::string ProxyPort;
  std::string ProxyUsername;
  std::string ProxyPassword;  // stored in clear, on purpose
  std::string DefaultDir;
  std::vector<std::string> Folders;
  std::int32_t Security = 0;  // a position in kSecurityTypes; -1 where the file has anything else
  std::string Certificate;    // the SHA-256 fingerprint that the user has accepted, 64 hexadecimal digits

  /// The stored password could not be deciphered and shows as "": it must be typed anew before a save.
  bool passwordUnreadable = false;
  /// Key of the last stored number that is too large for a run; "" when there is none.
  std::string_view numberTooLarge = "";
};

/// How the profile file, the form, the command line and a run treat a field.
struct ProfileField {
  enum class Kind {
    text,
    trimmed,     // saved without the blanks around it
    password,    // stored enciphered
    number,      // a run needs a number that is not too large
    fingerprint  // of a certificate (see PlainFingerprint), or empty
  };
  enum class Since {
    first,  // a missing key means an empty text or 0
    later   // a missing key means the default, and the default is not written; after Folders in the file
  };
  using Text = std::string SiteProfile::*;
  using Number = std::int32_t SiteProfile::*;

  std::string_view key;
  std::variant<Text, Number> member;
  Kind kind;
  std::string_view hint;  // what belongs in the field, as a sentence or two
  /// The largest number that a user may choose or, where the member is text, that a run can use.
  std::int32_t largest = std::numeric_limits<std::int32_t>::max();
  Since since = Since::first;

  /// The member; nullptr when it is of the other type.
  constexpr Text text() const { return member.index() == 0 ? std::get<0>(member) : nullptr; }
  constexpr Number number() const { return member.index() == 1 ? std::get<1>(member) : nullptr; }
};

/// Every field but name, ID and Folders, in the order in which the profile file has them, with Folders before
/// those of Since::later. A new field is a member of SiteProfile with its default, a row here with
/// Since::later, and a control of the form.
inline constexpr std::array kProfileFields = [] {
  using enum ProfileField::Kind;
  using P = SiteProfile;
  return std::to_array<ProfileField>({
      {"Status", &P::Status, number,
       "Backup runs take the profile. Without the tick it is left out, and nothing is lost.", 1},
      {"Host", &P::Host, trimmed,
       "The server's name or address, such as ftp.example.org, without ftp:// and without a folder."},
      {"UserID", &P::UserID, text, "The name you log in with at the server."},
      {"Password", &P::Password, password,
       "The password you log in with at the server. It is stored enciphered."},
      {"Port", &P::Port, number, "A number from 1 to 65535, usually 21; with implicit TLS 990."},
      {"Account", &P::Account, text,
       "Only for servers that ask for an account besides the user; otherwise empty."},
      {"SaveTo", &P::SaveTo, text, "The folder on this computer that keeps the backups."},
      {"RunURL", &P::RunURL, trimmed, "A web address that is called before the run connects to the site."},
      {"RunProgram", &P::RunProgram, trimmed,
       "A program or document that is opened before the run connects to the site."},
      {"Timeout", &P::Timeout, number,
       "Seconds that one step of the connection may take: a number from 1 to 9999, usually 60.",
       std::numeric_limits<std::int32_t>::max() / 1000},  // the client takes milliseconds
      {"PASV", &P::PASV, number,
       "This computer opens every connection, which gets through nearly all firewalls.", 1},
      {"ManualPort", &P::ManualPort, number,
       "The range is kept with the profile, but data connections use any free port.", 1},
      {"MinData", &P::MinData, text, "The lowest port: a number from 1 to 65535."},
      {"MaxData", &P::MaxData, text, "The highest port: a number from the lowest to 65535."},
      {"ProxyType", &P::ProxyType, number,
       "How FTP leaves your network. None: the server is reached directly.", kProxyTypes.size() - 1},
      {"ProxyHost", &P::ProxyHost, trimmed, "The proxy's name or address."},
      {"ProxyPort", &P::ProxyPort, number, "A number from 1 to 65535; whoever runs the proxy knows it."},
      {"ProxyUsername", &P::ProxyUsername, text, "The name at the proxy. Empty if it asks for none."},
      {"ProxyPassword", &P::ProxyPassword, text,
       "The password at the proxy. It is stored as you type it, not enciphered."},
      {"DefaultDir", &P::DefaultDir, trimmed,
       "The server's folder to go to after the login. Empty: the one that the login leads to."},
      {"Security", &P::Security, number,
       "With TLS the password and the files travel encrypted, or not at all. Explicit is the usual kind; "
       "implicit is for servers that want it on a port of its own, usually 990.",
       kSecurityTypes.size() - 1, ProfileField::Since::later},
      {"Certificate", &P::Certificate, fingerprint,
       "The SHA-256 fingerprint of the server's certificate: you trust it although this system cannot verify "
       "it.",
       std::numeric_limits<std::int32_t>::max(), ProfileField::Since::later},
  });
}();

/// The row of that key, nullptr when there is none.
constexpr const ProfileField* FieldOf(std::string_view key) {
  for (const ProfileField& field : kProfileFields) {
    if (field.key == key) return &field;
  }
  return nullptr;
}

}  // namespace quillmoor
