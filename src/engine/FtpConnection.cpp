#include "engine/FtpConnection.h"

#include "profiles/LenientNumber.h"

namespace quillmoor {

void SetFtpProperties(FtpClient& client, const RunProfileFields& profile) {
  client.timeoutMs = MultiplyLong(profile.Timeout, 1000);
  client.proxyType = profile.ProxyType;
  client.proxyUserName = profile.ProxyUsername;
  client.proxyPassword = profile.ProxyPassword;
  client.proxyHost = profile.ProxyHost;
  client.proxyPort = profile.ProxyPort;
  if (client.state() != FtpState::connected && client.passive() != profile.PASV)
    client.setPassive(profile.PASV);
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

}  // namespace quillmoor
