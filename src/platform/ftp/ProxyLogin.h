// Logs in at an FTP server, directly or through an FTP proxy in front of it: which commands, in which order,
// and who answers them.
//
// RFC 959 §5.4 (login sequence), RFC 4217 (TLS). The proxies' login methods are conventions without a
// standard; RFC 1919 describes such proxies in general.
#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "platform/ftp/FtpRoute.h"

namespace quillmoor {

struct FtpLogin {
  SocksAddress server;
  std::string userName, password, account;
  /// An empty user name skips the login at the proxy.
  FtpProxy proxy;
  FtpSecurity security = FtpSecurity::none;
  std::string certificate;  // see FtpClient::certificate
};

/// Reads the greeting over a new control connection and encrypts it as the login says. Replies go to `show`,
/// and a line with the protocol and the cipher. Raises FtpRefusal when the server does not encrypt, and
/// FtpControl's errors.
void beginSession(FtpControl& control, const FtpLogin& login, std::chrono::milliseconds timeout,
                  const std::function<void(const FtpReply&)>& show);

/// Begins the session and logs in over a new control connection, which leads to the proxy if it is an FTP
/// proxy. Encrypted, no user name is sent before the handshake, and data connections are protected (RFC 4217
/// §9). Returns the server's last reply; earlier ones go to `show`. Raises FtpRefusal, and FtpControl's
/// errors; the message says when a proxy refused.
FtpReply logInAtServer(FtpControl& control, const FtpLogin& login, std::chrono::milliseconds timeout,
                       const std::function<void(const FtpReply&)>& show);

}  // namespace quillmoor
