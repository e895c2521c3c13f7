// The remote browser's session with the server: logs in, changes folders, lists them.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "browser/BrowserEvents.h"
#include "engine/mCreatePath.h"
#include "platform/ftp/FtpClient.h"
#include "profiles/SiteProfile.h"

namespace quillmoor {

/// The operations block, all on one thread; they report by events and raise nothing. When the connection is
/// lost they log in again and return to the folder shown before; if that is gone, they list the current one.
class RemoteSession {
 public:
  /// A folder whose listing is longer is not shown.
  static constexpr std::size_t kMostListingBytes = std::size_t{16} << 20;
  /// Grace period for the logout.
  static constexpr std::int32_t kLogoutGraceMs = 2000;

  /// `events` must outlive this.
  RemoteSession(SiteProfile site, BrowserEvents& events);
  RemoteSession(const RemoteSession&) = delete;
  RemoteSession& operator=(const RemoteSession&) = delete;

  // Times in seconds. May be set on any thread at any time.
  std::atomic<std::int32_t> timeout = 30;
  std::atomic<std::int32_t> connectionDelay = 5;
  std::atomic<FolderNames> names = FolderNames::cut;
  /// Ends the link tests after BrowserEvents::linkTestsBegun. Must be reset between operations.
  std::atomic<bool> skipLinkTests = false;

  /// For the next listing.
  bool foldersOnly = false;

  /// Logs in, retrying until success, `stop` or a certificate that is rejected, then lists the profile's
  /// folder.
  void connect();
  /// For the next login: the user has accepted the certificate of that fingerprint.
  void acceptCertificate(const std::string& fingerprint) { profile_.Certificate = fingerprint; }
  void refresh();
  void changeFolder(const std::string& path);
  void changeToParent();
  /// For a link whose own path is not a folder: tests `path` instead and reports linkLeadsToFolder for `row`
  /// if it is one. The current folder stays.
  void tryLink(const std::string& path, std::size_t row);
  /// Does nothing when not connected.
  void keepAlive();
  /// Logs out within the grace period. Must be the last operation.
  void logOut();

  // On any thread:

  /// Aborts the current operation; later ones, except `logOut`, do nothing.
  void stop() { raiseStop(Stop::operations); }
  /// Also aborts or skips `logOut`. Aborting a transfer cleanly may still take 2 s.
  void kill() { raiseStop(Stop::everything); }

 private:
  enum class Stop { no, operations, everything };

  bool connected() const { return client_.state() == FtpState::connected; }
  bool stopping() const { return stop_ != Stop::no; }
  void raiseStop(Stop stop);
  void pump();
  void setLoggedIn(bool loggedIn);
  bool logIn();
  bool tryLogin();
  void waitSeconds(std::int32_t seconds);
  template <class Change>
  void go(Change change, bool fromAnywhere = false);
  void listFolder(bool testingLinks = true);
  bool testLinks(const std::vector<std::size_t>& rows, const std::vector<std::string>& paths);

  BrowserEvents& events_;
  SiteProfile profile_;
  bool loggedIn_ = false;
  bool errorsSuppressed_ = false;
  std::optional<std::chrono::steady_clock::time_point> graceEnds_;
  std::string folder_;  // the current folder as reported by the server
  std::atomic<Stop> stop_ = Stop::no;
  std::mutex stopMutex_;
  std::condition_variable stopRaised_;
  FtpClient client_;
};

}  // namespace quillmoor
