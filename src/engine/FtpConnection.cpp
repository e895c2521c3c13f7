#include "engine/FtpConnection.h"

#include "base/LenientNumber.h"

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
