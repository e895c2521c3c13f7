#include "platform/ftp/FtpRoute.h"

#include <system_error>
#include <vector>

#include "platform/system/ErrorText.h"

namespace quillmoor {
namespace {

using std::chrono::milliseconds;

void connectDirectly(PumpedIo& io, FtpControl& control, const SocksAddress& machine, bool isProxy,
                     milliseconds timeout) {
  std::vector<asio::ip::tcp::endpoint> endpoints;
  try {
    endpoints = resolveHost(io, machine.host, machine.port, std::chrono::steady_clock::now() + timeout);
  } catch (const std::system_error& error) {
    throw FtpError(FtpErrorNumber::hostNotFound, std::string("Cannot find the ") +
                                                     (isProxy ? "proxy " : "host ") + machine.host + ": " +
                                                     ErrorText(error.code()) + ".");
  }
  control.connect(endpoints, (isProxy ? "the proxy " : "") + machine.host, timeout);
}

FtpErrorNumber numberOf(NetFailure failure) {
  switch (failure) {
    case NetFailure::badArgument:
      return FtpErrorNumber::badArgument;
    case NetFailure::badReply:
      return FtpErrorNumber::badReply;
    case NetFailure::connectFailed:
      return FtpErrorNumber::connectFailed;
    case NetFailure::refused:
      return FtpErrorNumber::proxyRefused;
    case NetFailure::timedOut:
      return FtpErrorNumber::timedOut;
    case NetFailure::connectionLost:
      break;
  }
  return FtpErrorNumber::connectionLost;
}

}  // namespace

FtpProxy checkedProxy(std::int32_t type, const std::string& host, std::int32_t port,
                      const std::string& userName, const std::string& password) {
  if (type == static_cast<std::int32_t>(FtpProxyType::none)) return {};
  const auto refuse = [](const std::string& what) { throw FtpError(FtpErrorNumber::badArgument, what); };
  if (type < 0 || type > static_cast<std::int32_t>(FtpProxyType::pipe)) {
    refuse("Unknown proxy type " + std::to_string(type) + ".");
  }
  if (host.empty()) refuse("The connection is to go through a proxy, but the proxy's host is missing.");
  if (port < 1 || port > 65535) {
    refuse(std::to_string(port) + " is not a valid port number for the proxy " + host + ".");
  }
  return {static_cast<FtpProxyType>(type), host, static_cast<std::uint16_t>(port), userName, password};
}

FtpSecurity checkedSecurity(std::int32_t security, FtpProxyType proxy) {
  if (security < 0 || security > static_cast<std::int32_t>(FtpSecurity::implicitTls)) {
    throw FtpError(FtpErrorNumber::badArgument,
                   "Unknown kind of encryption " + std::to_string(security) + "; nothing was sent.");
  }
  const auto wanted = static_cast<FtpSecurity>(security);
  const bool passesBytes = proxy == FtpProxyType::none || proxy == FtpProxyType::socks4 ||
                           proxy == FtpProxyType::socks5 || proxy == FtpProxyType::pipe;
  if (wanted != FtpSecurity::none && !passesBytes) {
    throw FtpError(FtpErrorNumber::badArgument,
                   "A proxy of this type reads the FTP session and cannot pass an encrypted one; nothing was "
                   "sent.");
  }
  return wanted;
}

std::optional<SocksRoute> connectControl(PumpedIo& io, FtpControl& control, const SocksAddress& server,
                                         const FtpProxy& proxy, milliseconds timeout) {
  if (proxy.type == FtpProxyType::none) {
    connectDirectly(io, control, server, false, timeout);
    return std::nullopt;
  }
  connectDirectly(io, control, {proxy.host, proxy.port}, true, timeout);
  if (proxy.type != FtpProxyType::socks4 && proxy.type != FtpProxyType::socks5) {
    // Such a proxy answers some commands itself, PORT for example, so possibly before the server has answered
    // earlier ones.
    control.sendNothingAhead();
    return std::nullopt;
  }

  const auto version = proxy.type == FtpProxyType::socks4 ? SocksVersion::v4 : SocksVersion::v5;
  const SocksRoute route{{version, proxy.userName, proxy.password}, server};
  try {
    socksConnect(io, control.stream().channel(), route.login, server,
                 std::chrono::steady_clock::now() + timeout);
  } catch (const NetError& error) {
    throw FtpError(numberOf(error.failure()), "Cannot connect to " + server.host + " through the proxy " +
                                                  proxy.host + ": " + error.what() + ".");
  }
  return route;
}

}  // namespace quillmoor
