// What the session of a run and that of the remote browser do alike with the FTP client.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "engine/ErrorGuard.h"
#include "engine/RunProfileFields.h"
#include "platform/FtpClient.h"

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
/// is the current folder. Calls `answer` with the position and the answer of each, until that returns false.
template <class Session, class Answer>
void TestRemoteFolderLinks(Session& session, const std::string& here, const std::vector<std::string>& paths,
                           Answer answer) {
  constexpr std::size_t kMostAtOnce = 16;
  constexpr std::size_t kMostBytes = 4096;  // a system takes so much at once, and a server's buffer as well
  const std::string back = "CWD " + here;
  for (std::size_t done = 0; done < paths.size();) {
    std::vector<std::string> lines;
    std::size_t end = done;
    for (std::size_t bytes = 0; end < paths.size() && end - done < kMostAtOnce; ++end) {
      bytes += paths[end].size() + back.size() + 16;
      if (bytes > kMostBytes && end > done) break;
      lines.push_back("CWD " + paths[end]);
      lines.push_back(back);
    }
    session.sendAhead(lines, false);
    for (; done < end; ++done) {
      const bool entered = Guarded([&] { session.setCurrentRemoteDirectory(paths[done]); });
      // Also where nothing was entered: the reply is on its way, and must be in before more is sent ahead.
      const bool left = Guarded([&] { session.setCurrentRemoteDirectory(here); });
      if (!answer(done, entered && left)) return;
    }
  }
}

}  // namespace quillmoor
