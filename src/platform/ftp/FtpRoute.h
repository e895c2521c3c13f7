// The route to an FTP server: direct, to an FTP proxy in front of it, or through a SOCKS proxy.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "platform/ftp/FtpControl.h"
#include "platform/net/SocksProxy.h"

namespace quillmoor {

/// See FtpClient's proxy properties.
struct FtpProxy {
  FtpProxyType type = FtpProxyType::none;
  std::string host;
  std::uint16_t port = 0;
  std::string userName, password;
};

/// Raises badArgument for an unknown type, and for a proxy without host or port.
FtpProxy checkedProxy(std::int32_t type, const std::string& host, std::int32_t port,
                      const std::string& userName, const std::string& password);

/// Raises badArgument for an unknown number, and for TLS with a proxy that speaks FTP itself: it would have
/// to read the session.
FtpSecurity checkedSecurity(std::int32_t security, FtpProxyType proxy);

/// How a session's connections pass a SOCKS proxy, which is the peer of the control connection's socket.
struct SocksRoute {
  SocksLogin login;
  SocksAddress server;  // as requested from the proxy
};

/// Establishes the control connection. Each step (resolving, connecting, negotiating with a SOCKS proxy) may
/// take the timeout. Raises FtpError. Returns the route for data connections where they do not simply go to
/// the control connection's peer.
std::optional<SocksRoute> connectControl(PumpedIo& io, FtpControl& control, const SocksAddress& server,
                                         const FtpProxy& proxy, std::chrono::milliseconds timeout);

}  // namespace quillmoor
