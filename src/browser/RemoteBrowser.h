// What the window "Browse FTP Site" shows and does, without the window.
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
#include "profiles/SiteProfileEditor.h"
#include "profiles/UserPrompts.h"

namespace quillmoor {

class SessionThread;

/// Walks a site, ticks folders and hands them to the profile editor.
///
/// No call blocks. The session works on a thread of its own, so that neither the browser nor a backup run has
/// to wait for the other; what comes of it is taken over, and told to the view, by `takeNews`. All calls come
/// from one thread. Texts handed out are valid UTF-8 without control characters.
///
///   opening    LoadBrowserPlacement, then construct; `connect` at the tick of Timer1 (kTimer1Ms)
///   meanwhile  `takeNews` every kNewsEveryMs while busy, `keepAlive` every kKeepAliveMs
///   closing    hide the window, `close`, go on with `takeNews` until BrowserView::closed, destroy
class RemoteBrowser final : private BrowserEvents {
 public:
  static constexpr int kTimer1Ms = 10;
  static constexpr int kKeepAliveMs = 50'000;
  static constexpr int kNewsEveryMs = 20;

  /// What "Add Checked" does with the ticked folders: put them into the editor's list
  /// (SiteProfileEditor::AddFolders) and show that. How many were not in it.
  using AddFolders = std::function<std::size_t(const std::vector<std::string>& folders)>;

  /// The references must outlive this. `settings` is what the program goes by: a delay that is changed there
  /// holds for the next wait. `foldersOnly`: as it was stored. Connects to nothing yet.
  RemoteBrowser(const BrowsedSite& site, const ApplicationSettings& settings, bool foldersOnly,
                BrowserView& view, UserPrompts& prompts, AddFolders addFolders);
  /// Ends whatever is in progress, without a call of the view. Says no goodbye to the server; where a
  /// transfer has to be ended in order, that takes up to 2 s.
  ~RemoteBrowser() override;

  /// Logs in, retrying without limit, and lists the first folder.
  void connect();
  /// Takes over what the session has done since. Does nothing when entered again from inside itself. Its last
  /// act may be a message box; while that stands, all calls may come, and the browser may go.
  void takeNews();
  /// Waits until there is something to take; not after BrowserView::closed, when nothing comes any more. For
  /// callers that have no timer.
  void waitForNews();
  /// Keeps the server from dropping an idle connection; nothing while busy or not connected.
  void keepAlive();

  // --- commands; those that need the server but `changeFolder` do nothing while busy, and log in anew when
  // the connection has been lost. While nothing but links is being tested, those that list a folder end the
  // tests and come behind.

  /// Double click or Enter on a row.
  void activate(std::size_t row);
  /// "Ch Dir", a choice in `cmbRemoteDir`, or Enter in it: `path` is what the box holds. While busy
  /// it is changed to when that is over, the last one of several.
  void changeFolder(const std::string& path);
  /// "Refresh".
  void refresh();
  /// `chkFoldersOnly`. While busy it takes effect when that is over.
  void setFoldersOnly(bool foldersOnly);

  /// A row's box was clicked. That of a file is unticked again at once, which the view is told.
  void setChecked(std::size_t row, bool checked);
  void selectAll() { checkAll(true); }
  void unselectAll() { checkAll(false); }
  void addChecked();

  /// The window is closed: stores its placement (the `foldersOnly` of it is set here) and logs out, ending
  /// whatever is in progress. Returns at once.
  void close(BrowserPlacement placement);

  // --- what is shown

  std::size_t rowCount() const { return rows_.size(); }
  /// By position in kBrowserColumns.
  std::string cell(std::size_t row, std::size_t column) const;
  RowIcon icon(std::size_t row) const { return rows_[row].icon; }
  bool checked(std::size_t row) const { return rows_[row].checked; }

  const LogText& log() const { return log_; }
  bool foldersOnly() const { return foldersOnly_; }
  /// An operation is in progress.
  bool busy() const { return busy_; }
  /// A command that lists a folder would do so, now or behind the tests of links.
  bool takesListing() const { return takesFolder() && (!busy_ || testingLinks_); }
  /// `changeFolder` does something.
  bool takesFolder() const { return begun_ && !closing_; }
  /// Another listing comes right behind what is being done.
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

  const ApplicationSettings& settings_;
  BrowserView& view_;
  UserPrompts& prompts_;
  const AddFolders addFolders_;
  std::vector<BrowserRow> rows_;
  LogText log_;
  /// Paths in the list of `cmbRemoteDir` as they are shown, and the server's bytes of each.
  std::unordered_map<std::string, std::string> folders_;
  bool foldersOnly_ = false;
  bool listedFoldersOnly_ = false;
  bool begun_ = false;
  bool busy_ = false;
  bool loggedIn_ = false;
  bool closing_ = false;
  bool takingNews_ = false;
  bool testingLinks_ = false;
  std::function<void()> next_;  // a listing that is to come behind what is being done
  std::optional<std::string> unparsed_;
  std::unique_ptr<SessionThread> session_;
};

}  // namespace quillmoor
