#include "browser/RemoteSession.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <stdexcept>
#include <utility>
#include <vector>

#include "base/BusyFlag.h"
#include "base/ErrorGuard.h"
#include "base/Utf8.h"
#include "engine/FtpAdvice.h"
#include "engine/FtpConnection.h"
#include "engine/ListingParser.h"
#include "engine/ShownText.h"

namespace quillmoor {

RemoteSession::RemoteSession(SiteProfile site, BrowserEvents& events)
    : events_(events), profile_(std::move(site)) {
  client_.maxListingBytes = kMostListingBytes;
  client_.pump = [this] { pump(); };
  client_.onState = [this](FtpState state) { events_.logLine(ConnectionStateLine(state, profile_.Host)); };
  client_.onError = [this](int number, const std::string& description) {
    // An error that ends the session is always reported.
    const bool ended = !connected() && number != static_cast<int>(FtpErrorNumber::notConnected);
    if (stopping() || (errorsSuppressed_ && !ended)) return;
    events_.logLine("Error: " + std::to_string(number) + ", " + description + "\r\n");
  };
}

void RemoteSession::raiseStop(Stop stop) {
  {
    const std::lock_guard lock(stopMutex_);
    stop_ = std::max(stop_.load(), stop);
  }
  stopRaised_.notify_all();
}

void RemoteSession::pump() {
  const bool late = graceEnds_ && std::chrono::steady_clock::now() >= *graceEnds_;
  if (late || stop_ == Stop::everything || (stop_ == Stop::operations && !graceEnds_)) client_.abort();
}

void RemoteSession::setLoggedIn(bool loggedIn) {
  loggedIn_ = loggedIn;
  events_.loginChanged(loggedIn);
}

void RemoteSession::waitSeconds(std::int32_t seconds) {
  // With a delay of 0 the loop must not spin.
  const auto time =
      std::max<std::chrono::milliseconds>(std::chrono::seconds(seconds), std::chrono::milliseconds(10));
  std::unique_lock lock(stopMutex_);
  stopRaised_.wait_for(lock, time, [&] { return stopping(); });
}

/// False when it makes no sense to try again.
bool RemoteSession::tryLogin() {
  constexpr std::int32_t kLongest = std::numeric_limits<std::int32_t>::max() / 1000;
  profile_.Timeout = std::to_string(std::clamp(timeout.load(), std::int32_t{0}, kLongest));
  try {
    SetFtpProperties(client_, profile_);
    LogIn(client_, profile_);
  } catch (const FtpError& error) {
    if (stopping()) return false;
    events_.logLine("Login error: " + std::to_string(error.number()) + "," + error.what() + "\r\n");
    const std::string advice = LoginAdvice(error.number(), error.what(), profile_.Security != 0);
    if (!advice.empty()) events_.logLine(advice + "\r\n");
    if (!client_.rejectedCertificate()) return true;
    events_.certificateRejected(*client_.rejectedCertificate());
    return false;
  }
  return true;
}

bool RemoteSession::logIn() {
  setLoggedIn(false);
  events_.clearRows();
  for (std::int64_t attempts = 1; !stopping(); ++attempts) {
    const bool mayTryAgain = tryLogin();
    if (connected()) {
      setLoggedIn(true);
      if (client_.offersTls() && PassesTls(profile_.ProxyType)) {
        events_.logLine(
            "The server offers encryption: choose TLS under \"Security\" in the profile to use it.\r\n");
        events_.tlsOffered();
      }
      return true;
    }
    if (stopping() || !mayTryAgain) break;
    const std::int32_t delay = connectionDelay;
    events_.logLine("Retry : " + std::to_string(attempts) + "\r\n");
    events_.logLine("Waiting " + std::to_string(delay) + " Seconds...\r\n");
    waitSeconds(delay);
  }
  return false;
}

void RemoteSession::connect() {
  go([] {});
}

/// Changes the folder and lists the resulting one. When the change fails, the displayed folder stays: it is
/// still the current one. A connection that the server dropped while idle is noticed only at the first
/// command, so everything is then tried a second time.
template <class Change>
void RemoteSession::go(Change change, bool fromAnywhere) {
  const std::string from = folder_.empty() ? profile_.DefaultDir : folder_;
  for (int round = 0; round < 2 && !stopping(); ++round) {
    const bool newLogin = !connected();
    if (newLogin && !logIn()) return;
    // Relative to any other folder than the displayed one, most changes would lead to a wrong folder.
    const bool back = !newLogin || from.empty() || Guarded([&] { client_.setCurrentRemoteDirectory(from); });
    const bool changed = (back || fromAnywhere) && Guarded(change);
    if (connected()) {
      if (changed || newLogin) {
        Guarded([&] { listFolder(); });
      } else if (!folder_.empty()) {
        events_.folderChanged(folder_);
      }
    }
    if (connected()) return;
  }
}

void RemoteSession::refresh() {
  go([] {});
}

void RemoteSession::changeFolder(const std::string& path) {
  go([&] { client_.setCurrentRemoteDirectory(path); }, path.starts_with('/'));
}

void RemoteSession::changeToParent() {
  go([&] { client_.changeToParent(); });
}

void RemoteSession::listFolder(bool testingLinks) {
  events_.clearRows();
  events_.addRows({ParentRow()});
  client_.sendAhead({"PWD"}, true);
  folder_ = client_.currentRemoteDirectory();
  events_.folderChanged(folder_);

  FtpListing listed = client_.list();
  if (!listed.cut.empty()) {
    events_.logLine("The server has not listed all of " + folder_ + ": " + listed.cut + "\r\n");
  }
  RemoteListing listing = ParseListing(std::move(listed.text), LocalNow());
  if (listing.text.empty()) return;
  if (listing.format == ListingFormat::neither) {
    if (loggedIn_) events_.unparsedListing(std::move(listing.text));
    return;
  }
  if (listing.unreadCount != 0) {
    events_.logLine(std::to_string(listing.unreadCount) + " lines of the listing of " + folder_ +
                    " cannot be read. The first: " + FirstCharacters(ShownText(listing.unread.front()), 200) +
                    "\r\n");
  }
  std::vector<BrowserRow> rows = FolderRows(listing, folder_, foldersOnly, names);
  std::vector<std::size_t> links;
  std::vector<std::string> paths;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (rows[i].icon != RowIcon::Link) continue;
    links.push_back(i + 1);  // after the parent row
    paths.push_back(rows[i].tag);
  }
  events_.addRows(std::move(rows));
  if (!testingLinks || links.empty() || testLinks(links, paths)) return;
  if (!connected() || stopping()) return;
  events_.logLine("Cannot return from a link to " + folder_ + "; showing the link's target.\r\n");
  listFolder(false);
}

/// Called after the rows were reported. Logs nothing: a link to a file is not an error. False when the
/// current folder is a different one afterwards.
bool RemoteSession::testLinks(const std::vector<std::size_t>& rows, const std::vector<std::string>& paths) {
  if (!loggedIn_) return true;
  events_.linkTestsBegun();
  const BusyFlag suppressed(errorsSuppressed_);
  return TestRemoteFolderLinks(client_, folder_, paths, [&](std::size_t i, bool leadsToFolder) {
    if (leadsToFolder) events_.linkLeadsToFolder(rows[i]);
    return connected() && !stopping() && !skipLinkTests;
  });
}

void RemoteSession::tryLink(const std::string& path, std::size_t row) {
  if (connected() && Guarded([&] { client_.setCurrentRemoteDirectory(path); })) {
    if (Guarded([&] { client_.setCurrentRemoteDirectory(folder_); })) {
      events_.linkLeadsToFolder(row);
    } else if (connected()) {
      Guarded([&] { listFolder(false); });
    }
  }
  if (!connected()) refresh();
}

void RemoteSession::keepAlive() {
  if (connected()) Guarded([&] { client_.command("PWD"); });
}

void RemoteSession::logOut() {
  graceEnds_ = std::chrono::steady_clock::now() + std::chrono::milliseconds(kLogoutGraceMs);
  client_.timeoutMs = kLogoutGraceMs;
  if (connected() && stop_ != Stop::everything) Guarded([&] { client_.logout(); });
  setLoggedIn(false);
}

}  // namespace quillmoor
