// Logging in at an FTP server, straight or through an FTP proxy that stands before it: which commands, in
// which order, and whose answers they get.
//
// RFC 959 §5.4 (login sequence). The ways of the proxies are custom and stand in no standard; RFC 1919 tells
// of such proxies in general.
#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "platform/ftp/FtpRoute.h"

namespace quillmoor {

struct FtpLogin {
  SocksAddress server;
  std::string userName, password, account;
  /// An empty user name leaves the login at the proxy out.
  FtpProxy proxy;
};

/// Takes the greeting and logs in over a control connection that has just been made, to the proxy where the
/// type is one that an FTP proxy speaks. Returns the server's last reply; the ones before go to `show`.
/// Raises FtpRefusal, and what FtpControl raises; a proxy's refusal is told as the proxy's.
FtpReply logInAtServer(FtpControl& control, const FtpLogin& login, std::chrono::milliseconds timeout,
                       const std::function<void(const FtpReply&)>& show);

}  // namespace quillmoor
