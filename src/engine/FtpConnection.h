// What the session of a run and that of the remote browser do alike with the FTP client.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "base/ErrorGuard.h"
#include "engine/RunProfileFields.h"
#include "platform/ftp/FtpClient.h"

namespace quillmoor {

/// Puts the profile's connection settings on the client. A session keeps the passive mode that it was opened
/// with. Raises std::overflow_error, with nothing set, when the time-out is too large.
void SetFtpProperties(FtpClient& client, const RunProfileFields& profile);

/// The line of the log, its line break included, for a new state of the connection to `host`.
std::string ConnectionStateLine(FtpState state, const std::string& host);

/// Can the current folder be changed to the path, and back? `Session` is an FtpClient or passes on to one.
template <class Session>
bool IsRemoteFolderLink(Session& session, const std::string& path) {
  return Guarded([&] {
    session.sendAhead({"PWD", "CWD " + path}, false);
    const std::string here = session.currentRemoteDirectory();
    session.setCurrentRemoteDirectory(path);
    session.setCurrentRemoteDirectory(here);
  });
}

/// The same of many paths, which takes a round trip for a dozen of them where the server reads ahead. `here`
/// is the current folder. Calls `answer` with the position and the answer of each, until that returns false;
/// some more may be answered then, whose commands are on their way already. False, and no more is tested,
/// when the way back has failed: the current folder is another one now.
bool TestRemoteFolderLinks(FtpClient& client, const std::string& here, const std::vector<std::string>& paths,
                           const std::function<bool(std::size_t, bool)>& answer);

}  // namespace quillmoor
