// The tree walk: mirrors a remote folder and everything below it into the profile's local folder.
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

/// Does not trust the server: names and paths that could lead out of the local folder are logged and skipped,
/// and endless trees are cut off.
class TreeWalk {
 public:
  /// Maximum depth of nested folders.
  static constexpr std::size_t kDeepestNesting = 200;

  /// All arguments must outlive this.
  TreeWalk(const RunServices& services, RunState& state, RunLog& log, FtpSession& session)
      : services_(services), state_(state), log_(log), session_(session) {}

  /// Must be called before the first folder of a profile.
  void beginProfile() { restReported_ = false; }

  /// Walks one remote folder depth-first; `folderDate` becomes the date of its local folder. Raises nothing;
  /// returns early at a Stop and once the profile's login is given up.
  void WalkRemoteFolder(const std::string& remotePath, LocalDateTime folderDate);

 private:
  /// A folder that has been entered: its path as reported by the server, and its listing.
  struct Folder {
    std::string currentDir;
    FtpListing listing;
    bool complete = true;  // false: a failure was counted, and the listing may be partial or another folder's
  };

  void walk(const std::string& remotePath, LocalDateTime folderDate);
  bool enterFolder(const std::string& remotePath, Folder& folder);
  bool mayWalk(const std::string& currentDir);
  bool prepareLocalFolder(const std::string& localDir, LocalDateTime folderDate);
  void reportUnlisted(const Folder& folder, const RemoteListing& listing);
  bool isLoop(const WalkTrail::Level& level, const std::string& currentDir);
  void reportCutPath(const std::string& currentDir, const std::string& remoteBase);
  void reportEmptyFolder(const std::string& currentDir, const std::string& localDir);
  bool mayGoOn(const std::string& remoteItem);
  bool acceptName(const std::string& name);
  bool isFree(const RemoteEntry& entry, const std::string& localDir,
              std::map<std::string, std::string>& taken);
  void walkFile(const std::string& localFile, const std::string& remoteFile, const RemoteEntry& entry);
  bool IsRemoteFolderLink(const std::string& path);

  /// Whether the file is up to date afterwards.
  bool SyncRemoteFile(const std::string& localFile, const std::string& remoteFile, const RemoteEntry& entry);
  bool isUpToDate(const std::string& localFile, LocalDateTime remoteDate);
  bool download(const std::string& localFile, const std::string& remoteFile, const RemoteEntry& entry,
                LocalDateTime remoteDate);

  template <class Operation>
  bool retried(Operation&& operation);
  /// The same, but continues to count from `attempts`.
  template <class Operation>
  bool retried(Operation&& operation, std::int32_t& attempts);
  /// How often an operation is tried in all when the connection is lost during it.
  std::int64_t rounds() const { return std::int64_t{std::max(services_.settings.FtpRetryCount, 1)} + 1; }
  void pump() const;
  /// Logs an error about something that is not backed up, and counts it.
  void logError(std::string_view what, std::string_view name);

  const RunServices& services_;
  RunState& state_;
  RunLog& log_;
  FtpSession& session_;
  WalkTrail trail_;
  std::string reason_;         // why the last retried operation failed
  bool restReported_ = false;  // the log says that the rest of the profile is skipped
};

/// Performs the operation until it raises nothing, at most `FtpRetryCount` times (at least once), and not
/// again after a Stop or without a connection. The client's error event has logged each failure; `reason_`
/// keeps the last one.
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
