// The way to an FTP server: straight to it, to an FTP proxy that stands before it, or through a SOCKS proxy.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "platform/ftp/FtpControl.h"
#include "platform/net/SocksProxy.h"

namespace quillmoor {

/// As FtpClient's properties, which see.
struct FtpProxy {
  FtpProxyType type = FtpProxyType::none;
  std::string host;
  std::uint16_t port = 0;
  std::string userName, password;
};

/// Raises badArgument for a type that there is not, and where a proxy lacks its host or port.
FtpProxy checkedProxy(std::int32_t type, const std::string& host, std::int32_t port,
                      const std::string& userName, const std::string& password);

/// The way of a session's connections through a SOCKS proxy, which is the machine at the other end of the
/// control connection's socket.
struct SocksRoute {
  SocksLogin login;
  SocksAddress server;  // as the proxy was asked for it
};

/// Makes the control connection. Each of its steps may take the time: to look up, to connect, to agree with a
/// SOCKS proxy. Raises FtpError. Returns the way for the data connections where it is not simply to the
/// control connection's other end.
std::optional<SocksRoute> connectControl(PumpedIo& io, FtpControl& control, const SocksAddress& server,
                                         const FtpProxy& proxy, std::chrono::milliseconds timeout);

}  // namespace quillmoor
