// The remote browser's session with the server: logs in, walks from folder to folder, lists.
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
#include "engine/RunProfileFields.h"
#include "engine/mCreatePath.h"
#include "platform/ftp/FtpClient.h"
#include "profiles/SiteProfileEditor.h"

namespace quillmoor {

/// The operations block, all on one thread; they tell what they do by events and raise nothing. Each that
/// finds the connection lost logs in anew and goes back to the folder shown before; where that is gone, it
/// lists the one it is in.
class RemoteSession {
 public:
  /// A folder whose listing is longer is not shown.
  static constexpr std::size_t kMostListingBytes = std::size_t{16} << 20;
  /// How long a farewell may take.
  static constexpr std::int32_t kFarewellMs = 2000;

  /// `events` must outlive this.
  RemoteSession(const BrowsedSite& site, BrowserEvents& events);
  RemoteSession(const RemoteSession&) = delete;
  RemoteSession& operator=(const RemoteSession&) = delete;

  // Seconds; may be set on any thread, at any time.
  std::atomic<std::int32_t> timeout = 30;
  std::atomic<std::int32_t> connectionDelay = 5;
  std::atomic<FolderNames> names = FolderNames::cut;
  /// Ends the tests of links once BrowserEvents::linkTestsBegun was told. To be set back between operations.
  std::atomic<bool> skipLinkTests = false;

  /// For the next listing.
  bool foldersOnly = false;

  /// Logs in, retrying without limit until it has worked or `stop`; then lists the profile's folder.
  void connect();
  void refresh();
  void changeFolder(const std::string& path);
  void changeToParent();
  /// A link that leads to no folder by its own path: perhaps `path` is one. Tells it of `row` then; the
  /// current folder stays.
  void tryLink(const std::string& path, std::size_t row);
  /// Nothing while not connected.
  void keepAlive();
  /// Says goodbye, within kFarewellMs. The last operation.
  void logOut();

  // On any thread:

  /// Ends the operation in progress; any later one but `logOut` does nothing.
  void stop() { raiseStop(Stop::operations); }
  /// Ends that too, and says no goodbye. To end a transfer in order may still take 2 s.
  void kill() { raiseStop(Stop::everything); }

 private:
  enum class Stop { no, operations, everything };

  bool connected() const { return client_.state() == FtpState::connected; }
  bool stopping() const { return stop_ != Stop::no; }
  void raiseStop(Stop stop);
  void pump();
  void setLoggedIn(bool loggedIn);
  bool logIn();
  void tryLogin();
  void waitSeconds(std::int32_t seconds);
  template <class Change>
  void go(Change change, bool fromAnywhere = false);
  void listFolder(bool testingLinks = true);
  bool testLinks(const std::vector<std::size_t>& rows, const std::vector<std::string>& paths);

  BrowserEvents& events_;
  RunProfileFields profile_;
  bool loggedIn_ = false;
  bool muted_ = false;
  std::optional<std::chrono::steady_clock::time_point> farewellEnds_;
  std::string folder_;  // the current one, as the server has reported it
  std::atomic<Stop> stop_ = Stop::no;
  std::mutex stopMutex_;
  std::condition_variable stopRaised_;
  FtpClient client_;
};

}  // namespace quillmoor
