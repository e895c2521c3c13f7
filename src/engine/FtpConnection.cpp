#include "engine/FtpConnection.h"

#include <limits>
#include <stdexcept>

#include "base/LenientNumber.h"
#include "profiles/ProfileHints.h"
#include "profiles/SiteProfileStore.h"

namespace quillmoor {

namespace {

/// A number that is too large is as wrong as the largest one, and the client says so.
std::int32_t numberOf(const std::string& text) {
  try {
    return ToLong(text);
  } catch (const std::overflow_error&) {
    return std::numeric_limits<std::int32_t>::max();
  }
}

}  // namespace

void SetFtpProperties(FtpClient& client, const SiteProfile& profile) {
  client.timeoutMs = MultiplyLong(numberOf(profile.Timeout), 1000);
  client.proxyType = profile.ProxyType;
  client.proxyUserName = profile.ProxyUsername;
  client.proxyPassword = profile.ProxyPassword;
  client.proxyHost = profile.ProxyHost;
  client.proxyPort = numberOf(profile.ProxyPort);
  client.security = profile.Security;
  client.certificate = profile.Certificate;
  const bool passive = profile.PASV != 0;
  if (client.state() != FtpState::connected && client.passive() != passive) client.setPassive(passive);
}

std::string WhyNoLogin(const SiteProfile& profile) {
  if (!profile.numberTooLarge.empty())
    return "The number " + std::string(profile.numberTooLarge) + " is too large";
  if (profile.passwordUnreadable) return "The stored password cannot be deciphered; enter it anew";
  if (profile.Host.empty()) return "The host is missing";
  const std::int32_t port = numberOf(profile.Port), proxyPort = numberOf(profile.ProxyPort);
  if (!IsPort(port)) return std::to_string(port) + " is no port number";
  if (profile.ProxyType < 0 || static_cast<std::size_t>(profile.ProxyType) >= kProxyTypes.size())
    return "There is no proxy type " + std::to_string(profile.ProxyType);
  const std::string unencrypted = WhyNoEncryption(profile);
  if (profile.ProxyType == 0 || !unencrypted.empty()) return unencrypted;
  if (profile.ProxyHost.empty()) return "The proxy's host is missing";
  if (!IsPort(proxyPort)) return std::to_string(proxyPort) + " is no port number of a proxy";
  return "";
}

TlsCertificate ReadCertificate(const std::string& host, std::int32_t port) {
  FtpClient client;
  SetFtpProperties(client, SiteProfile());
  const bool implicit = std::to_string(port) == UsualPort(kImplicitTls);
  client.security = implicit ? kImplicitTls : kExplicitTls;
  return client.readCertificate(host, port);
}

void LogIn(FtpClient& client, const SiteProfile& profile) {
  client.login(profile.Host, profile.UserID, profile.Password, profile.Account, numberOf(profile.Port));
}

std::string ConnectionStateLine(FtpState state, const std::string& host) {
  switch (state) {
    case FtpState::connecting:
      return "Connecting... \r\n";
    case FtpState::connected:
      return "Connected to: " + host + "\r\n";
    case FtpState::closing:
      return "Closing Connection\r\n";
    case FtpState::closed:
      break;
  }
  return "Connection Closed\r\n";
}

bool TestRemoteFolderLinks(FtpClient& client, const std::string& here, const std::vector<std::string>& paths,
                           const std::function<bool(std::size_t, bool)>& answer) {
  constexpr std::size_t kMostAtOnce = 16;
  constexpr std::size_t kMostBytes = 4096;  // fits the system's send buffer and a server's input buffer
  const std::string back = "CWD " + here;
  bool goOn = true;
  bool elsewhere = false;
  for (std::size_t done = 0; done < paths.size() && goOn && !elsewhere;) {
    std::vector<std::string> lines;
    std::size_t end = done;
    for (std::size_t bytes = 0; end < paths.size() && end - done < kMostAtOnce; ++end) {
      bytes += paths[end].size() + back.size() + 16;
      if (bytes > kMostBytes && end > done) break;
      lines.push_back("CWD " + paths[end]);
      lines.push_back(back);
    }
    // The server performs every command sent ahead. All their replies must be read before other commands are
    // sent, which may be the same ones.
    const bool sent = client.sendAhead(lines, false);
    for (; done < end && (sent || (goOn && !elsewhere)); ++done) {
      const bool entered = Guarded([&] { client.setCurrentRemoteDirectory(paths[done]); });
      const bool left = (entered || sent) && Guarded([&] { client.setCurrentRemoteDirectory(here); });
      if (left || entered) elsewhere = !left;
      goOn = answer(done, entered && left) && goOn;
    }
  }
  return !elsewhere;
}

}  // namespace quillmoor
