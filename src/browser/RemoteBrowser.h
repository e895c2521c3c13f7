// The logic of the window "Browse FTP Site", without the window.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "browser/BrowserEvents.h"
#include "browser/BrowserPlacement.h"
#include "browser/BrowserRow.h"
#include "browser/BrowserView.h"
#include "browser/RowIcon.h"
#include "engine/LogText.h"
#include "profiles/ApplicationSettings.h"
#include "profiles/SiteProfile.h"
#include "profiles/UserPrompts.h"

namespace quillmoor {

class SessionThread;

/// Walks a site, ticks folders and passes them to the profile editor.
///
/// No call blocks. The session has its own thread, so that the browser and a backup run do not wait for each
/// other; `takeEvents` processes its events and updates the view. All calls must be made on one thread.
/// Returned texts are valid UTF-8 without control characters.
///
///   opening    LoadBrowserPlacement, then construct; `connect` at the tick of Timer1 (kTimer1Ms)
///   meanwhile  `takeEvents` every kEventsEveryMs while busy, `keepAlive` every kKeepAliveMs
///   closing    hide the window, `close`, go on with `takeEvents` until BrowserView::closed, destroy
class RemoteBrowser final : private BrowserEvents {
 public:
  static constexpr int kTimer1Ms = 10;
  static constexpr int kKeepAliveMs = 50'000;
  static constexpr int kEventsEveryMs = 20;

  /// Changes the profile editor and shows the result.
  struct Editing {
    /// Adds the ticked folders to the list (SiteProfileEditor::AddFolders). Returns how many were new.
    std::function<std::size_t(const std::vector<std::string>& folders)> addFolders;
    /// The user has accepted the certificate of that fingerprint.
    std::function<void(const std::string& fingerprint)> acceptCertificate;
    /// See SiteProfileEditor::NoteTlsOffered.
    std::function<void()> noteTlsOffered;
  };

  /// The references must outlive this. `settings` is what the program goes by: a delay that is changed there
  /// holds for the next wait. `foldersOnly`: as it was stored. Connects to nothing yet.
  RemoteBrowser(const SiteProfile& site, const ApplicationSettings& settings, bool foldersOnly,
                BrowserView& view, UserPrompts& prompts, Editing editing);
  /// Aborts any operation without calling the view. Does not log out; aborting a transfer cleanly takes up to
  /// 2 s.
  ~RemoteBrowser() override;

  /// Logs in, retrying without a limit, and lists the first folder. A certificate that is not trusted ends
  /// the attempts; then a message box asks for a decision.
  void connect();
  /// Processes the session's pending events. Does nothing when re-entered. May end with a message box; while
  /// that is open, all calls are allowed and the browser may be closed.
  void takeEvents();
  /// Waits until an event is pending; for callers without a timer. Must not be called after
  /// BrowserView::closed: there are no more events.
  void waitForEvents();
  /// Keeps the server from dropping an idle connection. Does nothing while busy or not connected.
  void keepAlive();

  // --- commands. Those that need the server, except `changeFolder`, do nothing while busy; all log in again
  // when the connection is lost. While only links are being tested, those that list a folder end the tests
  // and follow.

  /// Double click or Enter on a row.
  void activate(std::size_t row);
  /// "Ch Dir", a choice in `cmbRemoteDir`, or Enter in it; `path` is the box's text. While busy the change
  /// waits until that is over; the last one wins.
  void changeFolder(const std::string& path);
  /// "Refresh".
  void refresh();
  /// `chkFoldersOnly`. While busy it takes effect afterwards.
  void setFoldersOnly(bool foldersOnly);

  /// A row's box was clicked. A file's box is unticked again at once, and the view is updated.
  void setChecked(std::size_t row, bool checked);
  void selectAll() { checkAll(true); }
  void unselectAll() { checkAll(false); }
  void addChecked();

  /// For closing the window: stores its placement (`foldersOnly` is filled in here), aborts any operation and
  /// logs out. Returns at once.
  void close(BrowserPlacement placement);

  // --- the displayed contents

  std::size_t rowCount() const { return rows_.size(); }
  /// `column` is an index into kBrowserColumns.
  std::string cell(std::size_t row, std::size_t column) const;
  RowIcon icon(std::size_t row) const { return rows_[row].icon; }
  bool checked(std::size_t row) const { return rows_[row].checked; }

  const LogText& log() const { return log_; }
  bool foldersOnly() const { return foldersOnly_; }
  /// Whether an operation is in progress.
  bool busy() const { return busy_; }
  /// Whether a command that lists a folder would do so, now or after the link tests.
  bool takesListing() const { return takesFolder() && (!busy_ || testingLinks_); }
  /// Whether `changeFolder` has an effect.
  bool takesFolder() const { return begun_ && !closing_; }
  /// Whether another listing follows the current operation.
  bool listingWaits() const { return static_cast<bool>(next_); }
  /// True after a login without error.
  bool loggedIn() const { return loggedIn_; }

 private:
  // BrowserEvents
  void logLine(std::string text) override;
  void clearRows() override;
  void addRows(std::vector<BrowserRow> rows) override;
  void linkTestsBegun() override;
  void linkLeadsToFolder(std::size_t row) override;
  void folderChanged(std::string path) override;
  void loginChanged(bool loggedIn) override;
  void certificateRejected(TlsCertificate certificate) override;
  void tlsOffered() override;
  void unparsedListing(std::string text) override;
  void operationEnded() override;
  void sessionEnded() override;

  template <class Operation>
  void start(Operation operation);
  template <class Operation>
  void startListing(Operation operation);
  void enter(std::string path);
  void checkAll(bool checked);
  void passSettings();
  void decideOn(const TlsCertificate& certificate);

  const std::string host_;
  const ApplicationSettings& settings_;
  BrowserView& view_;
  UserPrompts& prompts_;
  const Editing editing_;
  std::vector<BrowserRow> rows_;
  LogText log_;
  /// The paths in the list of `cmbRemoteDir`: displayed text to server's bytes.
  std::unordered_map<std::string, std::string> folders_;
  bool foldersOnly_ = false;
  bool listedFoldersOnly_ = false;
  bool begun_ = false;
  bool busy_ = false;
  bool loggedIn_ = false;
  bool closing_ = false;
  bool takingEvents_ = false;
  bool testingLinks_ = false;
  std::function<void()> next_;  // a listing to start after the current operation
  std::optional<std::string> unparsed_;
  std::optional<TlsCertificate> rejected_;
  std::string accepted_;  // fingerprint of the certificate that the user has accepted
  std::unique_ptr<SessionThread> session_;
};

}  // namespace quillmoor
