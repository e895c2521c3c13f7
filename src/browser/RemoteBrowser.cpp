#include "browser/RemoteBrowser.h"

#include <iterator>
#include <utility>

#include "base/BusyFlag.h"
#include "base/Fingerprint.h"
#include "browser/CertificateQuestion.h"
#include "browser/SessionThread.h"
#include "browser/UnparsedListing.h"
#include "engine/RunLog.h"
#include "engine/ShownText.h"
#include "profiles/ProfileText.h"

namespace quillmoor {

RemoteBrowser::RemoteBrowser(const SiteProfile& site, const ApplicationSettings& settings, bool foldersOnly,
                             BrowserView& view, UserPrompts& prompts, Editing editing)
    : host_(site.Host),
      settings_(settings),
      view_(view),
      prompts_(prompts),
      editing_(std::move(editing)),
      foldersOnly_(foldersOnly),
      listedFoldersOnly_(foldersOnly),
      accepted_(PlainFingerprint(site.Certificate)),
      session_(std::make_unique<SessionThread>(site)) {}

RemoteBrowser::~RemoteBrowser() = default;

void RemoteBrowser::passSettings() {
  session_->session().timeout = settings_.Timeout;
  session_->session().connectionDelay = settings_.ConnectionDelay;
  session_->session().names = settings_.NamesAsListed == 1 ? FolderNames::asListed : FolderNames::cut;
}

template <class Operation>
void RemoteBrowser::start(Operation operation) {
  if (!begun_ || busy_ || closing_) return;
  busy_ = true;
  passSettings();
  session_->session().skipLinkTests = false;
  session_->start(std::move(operation));
  view_.showBusy(true);
}

template <class Operation>
void RemoteBrowser::startListing(Operation operation) {
  if (testingLinks_) {
    next_ = [this, operation = std::move(operation)] { startListing(operation); };
    session_->session().skipLinkTests = true;
    return;
  }
  if (!takesListing()) return;
  listedFoldersOnly_ = foldersOnly_;
  start([operation = std::move(operation), foldersOnly = foldersOnly_](RemoteSession& session) {
    session.foldersOnly = foldersOnly;
    operation(session);
  });
}

void RemoteBrowser::connect() {
  if (std::exchange(begun_, true)) return;
  startListing([](RemoteSession& session) { session.connect(); });
}

void RemoteBrowser::refresh() {
  startListing([](RemoteSession& session) { session.refresh(); });
}

void RemoteBrowser::changeFolder(const std::string& path) {
  if (path.empty() || !takesFolder()) return;
  if (busy_ && !testingLinks_) {
    next_ = [this, path] { changeFolder(path); };
    session_->session().skipLinkTests = true;
    return;
  }
  const auto known = folders_.find(path);
  enter(known == folders_.end() ? path : known->second);
}

void RemoteBrowser::enter(std::string path) {
  startListing([path = std::move(path)](RemoteSession& session) { session.changeFolder(path); });
}

void RemoteBrowser::activate(std::size_t row) {
  if (row >= rows_.size()) return;
  const BrowserRow& activated = rows_[row];
  switch (activated.icon) {
    case RowIcon::Cdup:
      return startListing([](RemoteSession& session) { session.changeToParent(); });
    case RowIcon::FolderClose:
      return enter(activated.text());
    case RowIcon::FolderLink:
      return enter(activated.tag.substr(0, activated.tag.find("->")));
    case RowIcon::Link:
      if (busy_) return;  // not tested yet
      return startListing(
          [path = activated.text(), row](RemoteSession& session) { session.tryLink(path, row); });
    default:
      return;  // a file
  }
}

void RemoteBrowser::keepAlive() {
  start([](RemoteSession& session) { session.keepAlive(); });
}

void RemoteBrowser::setFoldersOnly(bool foldersOnly) {
  foldersOnly_ = foldersOnly;
  refresh();
}

void RemoteBrowser::setChecked(std::size_t row, bool checked) {
  if (row >= rows_.size()) return;
  rows_[row].checked = checked && IsNavigable(rows_[row].icon);
  if (rows_[row].checked != checked) view_.rowsChanged(row, row);
}

void RemoteBrowser::checkAll(bool checked) {
  if (rows_.empty()) return;
  for (BrowserRow& row : rows_) row.checked = checked && IsNavigable(row.icon);
  view_.rowsChanged(0, rows_.size() - 1);
}

void RemoteBrowser::addChecked() {
  std::vector<std::string> folders;
  for (const BrowserRow& row : rows_) {
    if (!row.checked || row.tag.empty()) continue;
    const std::string shown = ShownText(row.tag);
    // The editor stores text; converted to text, other bytes would name a different folder.
    const std::string why = shown == row.tag
                                ? WhyNoFolder("A folder", row.tag)
                                : "A folder's name cannot be stored as text in a profile: " + shown;
    if (why.empty()) {
      folders.push_back(row.tag);
    } else {
      logLine("Not added: " + why + "\r\n");
    }
  }
  const std::size_t added = editing_.addFolders(folders);
  logLine("Added to the profile: " + std::to_string(added) +
          (added < folders.size() ? ", already in it: " + std::to_string(folders.size() - added) + "\r\n"
                                  : std::string("\r\n")));
}

void RemoteBrowser::close(BrowserPlacement placement) {
  if (closing_) return;
  logLine("Logging out ...\r\n");
  if (!std::exchange(busy_, true)) view_.showBusy(true);
  closing_ = true;
  testingLinks_ = false;
  placement.foldersOnly = foldersOnly_;
  SaveBrowserPlacement(placement);
  session_->finish();
}

void RemoteBrowser::takeEvents() {
  {
    const BusyFlag taking(takingEvents_);
    if (!taking.taken()) return;
    passSettings();
    session_->deliver(*this);
  }
  if (const auto text = std::exchange(unparsed_, std::nullopt); text && !closing_)
    ReportUnparsedListing(*text, prompts_);
  if (const auto certificate = std::exchange(rejected_, std::nullopt); certificate && !closing_)
    decideOn(*certificate);
}

void RemoteBrowser::decideOn(const TlsCertificate& certificate) {
  const bool accepted = AsksToAccept(host_, certificate, !accepted_.empty(), prompts_);
  if (closing_) return;
  if (!accepted) return logLine("The certificate is not accepted. \"Refresh\" asks again.\r\n");
  accepted_ = certificate.fingerprint;
  editing_.acceptCertificate(accepted_);
  logLine("The certificate is accepted. Save the profile to keep it.\r\n");
  const auto logIn = [this] {
    startListing([fingerprint = accepted_](RemoteSession& session) {
      session.acceptCertificate(fingerprint);
      session.connect();
    });
  };
  if (!busy_) return logIn();
  next_ = logIn;
}

void RemoteBrowser::waitForEvents() {
  session_->waitForEvents();
}

std::string RemoteBrowser::cell(std::size_t row, std::size_t column) const {
  return ShownText(rows_[row].cells[column]);
}

// --- events of the session

void RemoteBrowser::logLine(std::string text) {
  if (log_.length() > RunLog::kLongestLog) log_.trim(RunLog::kTrimmed);
  log_.append(text);
  if (!closing_) view_.logChanged();
}

void RemoteBrowser::clearRows() {
  testingLinks_ = false;
  rows_.clear();
  if (!closing_) view_.rowsCleared();
}

void RemoteBrowser::addRows(std::vector<BrowserRow> rows) {
  if (rows.empty()) return;
  const std::size_t first = rows_.size();
  if (first == 0) {
    rows_ = std::move(rows);
  } else {
    rows_.insert(rows_.end(), std::make_move_iterator(rows.begin()), std::make_move_iterator(rows.end()));
  }
  if (!closing_) view_.rowsAdded(first);
}

void RemoteBrowser::linkTestsBegun() {
  testingLinks_ = !closing_;
}

void RemoteBrowser::linkLeadsToFolder(std::size_t row) {
  if (row >= rows_.size()) return;
  rows_[row].icon = RowIcon::FolderLink;
  if (!closing_) view_.rowsChanged(row, row);
}

void RemoteBrowser::folderChanged(std::string path) {
  const std::string shown = ShownText(path);
  const bool isNew = folders_.insert_or_assign(shown, std::move(path)).second;
  if (!closing_) view_.showFolder(shown, isNew);
}

void RemoteBrowser::loginChanged(bool loggedIn) {
  loggedIn_ = loggedIn;
}

void RemoteBrowser::certificateRejected(TlsCertificate certificate) {
  rejected_ = std::move(certificate);
}

void RemoteBrowser::tlsOffered() {
  if (!closing_) editing_.noteTlsOffered();
}

void RemoteBrowser::unparsedListing(std::string text) {
  unparsed_ = std::move(text);
}

void RemoteBrowser::operationEnded() {
  if (closing_) return;
  busy_ = testingLinks_ = false;
  view_.showBusy(false);
  if (const auto next = std::exchange(next_, nullptr)) return next();
  if (listedFoldersOnly_ != foldersOnly_) refresh();
}

void RemoteBrowser::sessionEnded() {
  busy_ = false;
  view_.closed();
}

}  // namespace quillmoor
