// The tree walk: mirrors a remote folder and all below it into the profile's local folder.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "base/ErrorGuard.h"
#include "engine/FtpSession.h"
#include "engine/RemoteListing.h"
#include "engine/RunLog.h"
#include "engine/RunServices.h"
#include "engine/RunState.h"
#include "engine/WalkTrail.h"
#include "platform/system/LocalTime.h"

namespace quillmoor {

/// Trusts nothing that a server says of itself: names and paths that could lead out of the local folder are
/// passed over with a line in the log, and a tree without an end is given one.
class TreeWalk {
 public:
  /// Folders within folders are walked this deep.
  static constexpr std::size_t kDeepestNesting = 200;

  /// All must outlive this.
  TreeWalk(const RunServices& services, RunState& state, RunLog& log, FtpSession& session)
      : services_(services), state_(state), log_(log), session_(session) {}

  /// To be called before the first folder of a profile.
  void beginProfile() { restIsTold_ = false; }

  /// Walks one remote folder depth-first; `folderDate` becomes the date of its local folder. Raises nothing
  /// and returns early at a Stop, and once the profile's login is given up.
  void WalkRemoteFolder(const std::string& remotePath, LocalDateTime folderDate);

 private:
  /// A folder that has been entered: where the server says it is, and what it holds.
  struct Folder {
    std::string currentDir;
    FtpListing listing;
    bool complete = true;  // false: a failure is counted, and what is listed may be another folder, or a part
  };

  void walk(const std::string& remotePath, LocalDateTime folderDate);
  bool enterFolder(const std::string& remotePath, Folder& folder);
  bool mayWalk(const std::string& currentDir);
  bool prepareLocalFolder(const std::string& localDir, LocalDateTime folderDate);
  void tellWhatIsNotListed(const Folder& folder, const RemoteListing& listing);
  bool isLoop(const WalkTrail::Level& level, const std::string& currentDir);
  void tellCutPath(const std::string& currentDir, const std::string& remoteBase);
  void tellEmptyFolder(const std::string& currentDir, const std::string& localDir);
  bool mayGoOn(const std::string& remoteItem);
  bool acceptName(const std::string& name);
  bool isFree(const RemoteEntry& entry, const std::string& localDir,
              std::map<std::string, std::string>& taken);
  void walkFile(const std::string& localFile, const std::string& remoteFile, const RemoteEntry& entry);
  bool IsRemoteFolderLink(const std::string& path);

  /// Is the file up to date now?
  bool SyncRemoteFile(const std::string& localFile, const std::string& remoteFile, const RemoteEntry& entry);
  bool isUpToDate(const std::string& localFile, LocalDateTime remoteDate);
  bool download(const std::string& localFile, const std::string& remoteFile, const RemoteEntry& entry,
                LocalDateTime remoteDate);

  template <class Operation>
  bool retried(Operation&& operation);
  /// The same, counting on from `attempts`.
  template <class Operation>
  bool retried(Operation&& operation, std::int32_t& attempts);
  /// How often an operation is begun again after the connection was lost under it.
  std::int64_t rounds() const { return std::int64_t{std::max(services_.settings.FtpRetryCount, 1)} + 1; }
  void pump() const;
  /// Writes a red line about something that is not backed up, and counts it.
  void logError(std::string_view what, std::string_view name);

  const RunServices& services_;
  RunState& state_;
  RunLog& log_;
  FtpSession& session_;
  WalkTrail trail_;
  std::string reason_;       // why the last retried operation failed
  bool restIsTold_ = false;  // that the rest of the profile is not walked
};

/// Performs the operation until it raises nothing, but no more than `FtpRetryCount` times (once at least),
/// and not again after a Stop. Without a connection no further attempt can do anything, so that ends it too.
/// The client's error event has logged each failure; `reason_` keeps the last one.
template <class Operation>
bool TreeWalk::retried(Operation&& operation) {
  std::int32_t attempts = 0;
  return retried(operation, attempts);
}

template <class Operation>
bool TreeWalk::retried(Operation&& operation, std::int32_t& attempts) {
  for (;;) {
    ++attempts;
    if (Guarded(operation, reason_)) return true;
    if (state_.StopRequested || attempts >= services_.settings.FtpRetryCount || !session_.connected())
      return false;
  }
}

}  // namespace quillmoor
