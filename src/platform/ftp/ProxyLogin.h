// Logs in at an FTP server, directly or through an FTP proxy in front of it: which commands, in which order,
// and who answers them.
//
// RFC 959 §5.4 (login sequence). The proxies' login methods are conventions without a standard; RFC 1919
// describes such proxies in general.
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
};

/// Reads the greeting and logs in over a new control connection, which leads to the proxy if it is an FTP
/// proxy. Returns the server's last reply; earlier ones go to `show`. Raises FtpRefusal, and FtpControl's
/// errors; the message says when a proxy refused.
FtpReply logInAtServer(FtpControl& control, const FtpLogin& login, std::chrono::milliseconds timeout,
                       const std::function<void(const FtpReply&)>& show);

}  // namespace quillmoor
