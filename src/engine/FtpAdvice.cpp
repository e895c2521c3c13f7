#include "engine/FtpAdvice.h"

#include <algorithm>
#include <initializer_list>

#include "base/Ascii.h"

namespace quillmoor {
namespace {

bool isOneOf(int number, std::initializer_list<int> numbers) {
  return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
}

/// Lower case, with one blank around and between words: " 530 max clients reached ".
std::string plainWords(std::string_view text) {
  std::string plain = " ";
  for (const char c : AsciiLower(text)) {
    const bool ofWord = (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
    if (ofWord || plain.back() != ' ') plain += ofWord ? c : ' ';
  }
  if (plain.back() != ' ') plain += ' ';
  return plain;
}

/// Whether a word begins with one of these.
bool hasAny(const std::string& plain, std::initializer_list<const char*> beginnings) {
  return std::any_of(beginnings.begin(), beginnings.end(), [&](const char* beginning) {
    return plain.find(std::string(" ") + beginning) != std::string::npos;
  });
}

bool wantsEncryption(const std::string& plain) {
  return hasAny(plain, {"tls", "ssl", "ftps ", "ftpes ", "encrypt", "unencrypted", "cleartext", "clear text",
                        "plaintext", "plain text", "secure connection", "secure ftp"}) &&
         hasAny(plain, {"must", "requir", "need", "only", "use ", "using", "not allowed", "not accepted",
                        "not permitted", "forbidden", "disabled", "policy", "mandatory", "enforce", "force",
                        "without", "first "});
}

bool isCrowded(const std::string& plain) {
  // These are about too many wrong passwords, or about the session's time limit.
  if (hasAny(plain, {"fail", "attempt", "error", "incorrect", "invalid", "idle", "time limit", "timeout",
                     "time out", "timed out", "session time"}))
    return false;
  return hasAny(plain, {"connection", "connected", "client", "user", "session", "login", "logged in", "logon",
                        "people"}) &&
         hasAny(plain,
                {"too many", "maximum", "max ", "limit", "simultaneous", "concurrent", "count exceeded",
                 "already connected", "already logged in", "server full", "server is full"});
}

}  // namespace

std::string LoginAdvice(int number, std::string_view description, bool encrypted) {
  // The server's reply follows a text of this program's own.
  const auto reply = description.find(std::to_string(number));
  if (reply == std::string_view::npos) return {};
  const std::string plain = plainWords(description.substr(reply));
  // Some servers refuse an unencrypted USER with 421 or 550, but 550 is usually about a file.
  const bool ofLogin = description.substr(0, reply).find(" refused the ") != std::string_view::npos;
  const bool refusal = isOneOf(number, {421, 522, 530, 534}) || (number == 550 && ofLogin);
  if (!encrypted && refusal && wantsEncryption(plain))
    return "This server wants an encrypted connection: choose TLS under \"Security\" in the profile.";
  if (isOneOf(number, {421, 530}) && isCrowded(plain)) {
    return "The server takes no more connections at the moment: close other FTP programs that are connected "
           "to "
           "it, or ask its operator for a higher limit.";
  }
  return {};
}

}  // namespace quillmoor
