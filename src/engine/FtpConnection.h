// What a run's session and the remote browser's session share in their use of the FTP client.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "base/ErrorGuard.h"
#include "platform/ftp/FtpClient.h"
#include "profiles/SiteProfile.h"

namespace quillmoor {

/// Puts the profile's connection settings on the client. A session keeps the passive mode that it was opened
/// with. Raises std::overflow_error, with nothing set, when the time-out is too large.
void SetFtpProperties(FtpClient& client, const SiteProfile& profile);

/// Why every login with the profile would fail before a byte is sent, and so be tried without end: a sentence
/// without its full stop, "" when none would.
std::string WhyNoLogin(const SiteProfile& profile);

/// The certificate of the server, whether or not it is trusted. Encryption is asked for explicitly, on port
/// 990 implicitly. Raises FtpError.
TlsCertificate ReadCertificate(const std::string& host, std::int32_t port);

/// Logs in with what the profile says. Raises FtpError.
void LogIn(FtpClient& client, const SiteProfile& profile);

/// The log line, including its line break, for a new state of the connection to `host`.
std::string ConnectionStateLine(FtpState state, const std::string& host);

/// Whether the current folder can be changed to `path` and back. `Session` is an FtpClient or forwards to
/// one.
template <class Session>
bool IsRemoteFolderLink(Session& session, const std::string& path) {
  return Guarded([&] {
    session.sendAhead({"PWD", "CWD " + path}, false);
    const std::string here = session.currentRemoteDirectory();
    session.setCurrentRemoteDirectory(path);
    session.setCurrentRemoteDirectory(here);
  });
}

/// Tests many paths, up to 16 in one round trip when the server reads ahead. `here` is the current folder.
/// Calls `answer` with the index and the result of each until `answer` returns false, and then for those
/// whose commands are already sent. Returns false and tests no more when changing back has failed: the
/// current folder is then another one.
bool TestRemoteFolderLinks(FtpClient& client, const std::string& here, const std::vector<std::string>& paths,
                           const std::function<bool(std::size_t, bool)>& answer);

}  // namespace quillmoor
