#include "engine/TreeWalk.h"

#include <algorithm>
#include <set>

#include "engine/FtpConnection.h"
#include "engine/ListingDate.h"
#include "engine/ListingParser.h"
#include "engine/LogColours.h"
#include "engine/SafeName.h"
#include "engine/mCreatePath.h"
#include "engine/mFileLib.h"
#include "engine/mGeneral.h"
#include "platform/LocalFiles.h"
#include "platform/LocalPath.h"
#include "platform/WholeFile.h"

namespace quillmoor {
namespace {

/// Marks a folder as being walked.
class Walking {
 public:
  Walking(std::vector<std::string>& folders, const std::string& folder) : folders_(folders) {
    folders_.push_back(folder);
  }
  ~Walking() { folders_.pop_back(); }
  Walking(const Walking&) = delete;
  Walking& operator=(const Walking&) = delete;

 private:
  std::vector<std::string>& folders_;
};

bool isType(const RemoteEntry& entry, char lower) {
  return entry.type.size() == 1 && (entry.type[0] | 0x20) == lower;
}

}  // namespace

void TreeWalk::pump() const {
  if (services_.pump) services_.pump();
}

/// Of something that is not backed up, but not what a Stop leaves undone.
void TreeWalk::countFailure() {
  if (!state_.StopRequested) ++state_.failures;
}

void TreeWalk::logError(std::string_view what, std::string_view name) {
  countFailure();
  std::string line("Error: ");
  line.append(what).append(PrintableName(name)).append("\r\n");
  log_.AppendLog(line, log_colour::kError, true);
}

void TreeWalk::WalkRemoteFolder(const std::string& remotePath, LocalDateTime folderDate) {
  if (!Guarded([&] { walk(remotePath, folderDate); })) countFailure();
}

void TreeWalk::walk(const std::string& remotePath, LocalDateTime folderDate) {
  if (state_.StopRequested) return;
  if (walking_.size() >= kDeepestNesting) return logError("Folders are nested too deep: ", remotePath);

  Folder folder;
  if (!enterFolder(remotePath, folder)) return;
  const Walking mark(walking_, folder.currentDir);
  const std::string remoteBase = AddTrailingSeparator(folder.currentDir, true);
  const std::string localDir = LocalFolderFor(state_.LocalTargetFolder, folder.currentDir);
  if (!prepareLocalFolder(localDir, folderDate)) return;

  RemoteListing listing = ParseListing(std::move(folder.listing), services_.now(), services_.pump);
  if (listing.text.empty()) return;
  if (listing.format == ListingFormat::neither) {
    countFailure();
    return;
  }
  std::string().swap(listing.text);  // the levels below have theirs
  std::string remoteItem;
  std::string localFile;
  std::set<std::string> taken;
  for (const RemoteEntry& entry : listing.entries) {
    if (state_.StopRequested) return;
    if (entry.name == "." || entry.name == "..") continue;
    if (!acceptName(entry.name) || !isFree(entry, taken)) {
      pump();
      continue;
    }
    remoteItem.assign(remoteBase).append(entry.name);
    if (isType(entry, 'd')) {
      log_.AppendLog("Directory: " + PrintableName(remoteItem) + "\r\n", log_colour::kDirectory, true);
      WalkRemoteFolder(remoteItem, ParseListingDate(entry.dateText, services_.now()));
    } else if (isType(entry, 'l')) {
      // Asked and not used, on purpose: a link is neither followed nor fetched, whatever it points to.
      IsRemoteFolderLink(remoteItem);
    } else {
      localFile.assign(localDir).append(entry.name);
      walkFile(localFile, remoteItem, entry);
    }
    pump();
  }
}

/// Makes `remotePath` the current folder, learns where the server says that is, and lists it. A connection
/// that is lost on the way lands the next login somewhere else, so the entering begins again. False when the
/// folder is not to be walked.
bool TreeWalk::enterFolder(const std::string& remotePath, Folder& folder) {
  const auto typeA = [&] { session_.command("TYPE A"); };
  const auto lost = [&] { return !session_.connected(); };
  for (std::int64_t round = 0; round < rounds(); ++round) {
    session_.ConnectAndLogin();
    if (lost()) break;
    session_.SetFtpProperties();
    session_.sendAhead({"TYPE A", "CWD " + remotePath, "PWD", "TYPE A"}, true);
    retried(typeA);
    if (lost()) continue;
    // A folder that cannot be entered leaves the connection where it is: that folder is listed instead.
    const bool entered = retried([&] { session_.setCurrentRemoteDirectory(remotePath); });
    if (lost()) continue;
    folder.currentDir.clear();
    retried([&] { folder.currentDir = session_.currentRemoteDirectory(); });
    if (lost()) continue;
    if (folder.currentDir.empty()) break;
    if (!mayWalk(folder.currentDir)) return false;

    session_.SetFtpProperties();
    retried(typeA);
    if (lost()) continue;
    const bool listed = retried([&] { folder.listing = session_.list(); });
    if (!listed && lost()) continue;
    if (!entered || !listed) countFailure();
    return true;
  }
  if (!state_.StopRequested) logError("Unable to read the folder: ", remotePath);
  return false;
}

/// May the folder that the server has reported be walked? Asked before anything local is touched.
bool TreeWalk::mayWalk(const std::string& currentDir) {
  if (const auto reason = LocalFolderRefusal(state_.LocalTargetFolder, currentDir)) {
    logError("Refused folder (" + *reason + "): ", currentDir);
    return false;
  }
  if (std::find(walking_.begin(), walking_.end(), currentDir) != walking_.end()) {
    logError("The folder is being walked already: ", currentDir);
    return false;
  }
  return true;
}

bool TreeWalk::prepareLocalFolder(const std::string& localDir, LocalDateTime folderDate) {
  if (!LocalFolderExists(localDir) && !CreatePath(localDir)) {
    log_.AppendLog("Error: Unable to create directory: " + PrintableName(localDir), log_colour::kError, true);
    countFailure();
    return false;
  }
  // Of a run that was killed.
  RemoveLocalFile(LocalPathText(WholeFile::temporaryName(LocalPath(localDir))));
  SetFileModifiedTime(localDir, folderDate, true);
  return true;
}

bool TreeWalk::acceptName(const std::string& name) {
  const auto reason = ListedNameRefusal(name);
  if (!reason) return true;
  logError("Refused name (" + *reason + "): ", name);
  return false;
}

/// Where a disk does not regard case, a second name would write over the file of the first.
bool TreeWalk::isFree(const RemoteEntry& entry, std::set<std::string>& taken) {
  if (kLocalNameRules != LocalNameRules::windows || isType(entry, 'l')) return true;
  if (taken.insert(LocalNameKey(entry.name)).second) return true;
  logError("Refused name (another one differs from it in nothing but case): ", entry.name);
  return false;
}

void TreeWalk::walkFile(const std::string& localFile, const std::string& remoteFile,
                        const RemoteEntry& entry) {
  const auto size = static_cast<double>(entry.sizeBytes);
  log_.AppendLog("Retriving: ", log_colour::kRetrieving, true);
  log_.AppendLog(PrintableName(remoteFile) + "\r\n", log_colour::kRetrievedPath, false);
  services_.display.showProgress(0);
  services_.display.showFileSize(FormatSize(size));
  services_.display.showCurrentFile(remoteFile);
  bool there = false;
  Guarded([&] { there = SyncRemoteFile(localFile, remoteFile, entry); });
  if (!there) countFailure();
  services_.display.showCurrentFile("");
  services_.display.showProgress(0);
  state_.fileCount += 1;
  state_.byteCount += size;
  services_.display.setReportItem(state_.reportRow, ReportColumn::files,
                                  std::to_string(static_cast<std::int64_t>(state_.fileCount)));
  services_.display.setReportItem(state_.reportRow, ReportColumn::size, FormatSize(state_.byteCount));
  services_.display.repopulateReport();
}

/// Leaves no trace in the log.
bool TreeWalk::IsRemoteFolderLink(const std::string& path) {
  if (!state_.LoggedIn || !Guarded([&] { session_.SetFtpProperties(); })) return false;
  const FtpSession::Mute mute(session_);
  return quillmoor::IsRemoteFolderLink(session_, path);
}

}  // namespace quillmoor
