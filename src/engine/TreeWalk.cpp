#include "engine/TreeWalk.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "base/Ascii.h"
#include "base/Utf8.h"
#include "engine/FtpConnection.h"
#include "engine/ListingDate.h"
#include "engine/ListingParser.h"
#include "engine/LogColours.h"
#include "engine/SafeName.h"
#include "engine/ShownText.h"
#include "engine/mCreatePath.h"
#include "engine/mFileLib.h"
#include "engine/mGeneral.h"
#include "platform/files/Files.h"
#include "platform/files/LocalPath.h"
#include "platform/files/ReservedNames.h"
#include "platform/files/WorkFolder.h"
#include "platform/ftp/FtpWording.h"

namespace quillmoor {
namespace {

/// Whether the copy contains anything except a run's own temporary files.
bool holdsFiles(const std::string& localDir) {
  bool any = false;
  Guarded([&] {
    readFolder(localDir, true,
               [&](const std::string& name, FileKind) { any = any || !IsReservedLocalName(name); });
  });
  return any;
}

bool isType(const RemoteEntry& entry, char lower) {
  return entry.type.size() == 1 && (entry.type[0] | 0x20) == lower;
}

}  // namespace

void TreeWalk::pump() const {
  if (services_.pump) services_.pump();
}

void TreeWalk::logError(std::string_view what, std::string_view name) {
  state_.countFailure(name, what);
  std::string line("Error: ");
  line.append(what).append(": ").append(PrintableName(name)).append("\r\n");
  log_.AppendLog(line, log_colour::kError, true);
}

void TreeWalk::WalkRemoteFolder(const std::string& remotePath, LocalDateTime folderDate) {
  std::string reason;
  if (!Guarded([&] { walk(remotePath, folderDate); }, reason)) state_.countFailure(remotePath, reason);
}

void TreeWalk::walk(const std::string& remotePath, LocalDateTime folderDate) {
  if (state_.StopRequested) return;
  if (trail_.depth() >= kDeepestNesting) return logError("Folders are nested too deep", remotePath);

  Folder folder;
  if (!enterFolder(remotePath, folder)) return;
  const WalkTrail::Level level(trail_, folder.currentDir, folder.listing.text);
  if (isLoop(level, folder.currentDir)) return;
  const std::string remoteBase = AddTrailingSeparator(folder.currentDir, true, kLocalSeparator, state_.names);
  reportCutPath(folder.currentDir, remoteBase);
  const std::string localDir =
      LocalFolderFor(state_.LocalTargetFolder, folder.currentDir, kLocalSeparator, state_.names);
  if (!prepareLocalFolder(localDir, folderDate)) return;

  RemoteListing listing = ParseListing(std::move(folder.listing.text), services_.now(), services_.pump);
  if (listing.format == ListingFormat::neither && !saysNoFiles(listing.text)) {
    // Deliberate: not logged here; the end of the run reports it.
    state_.countFailure(folder.currentDir, "its listing is in an unknown format");
    return;
  }
  reportUnlisted(folder, listing);
  std::string().swap(listing.text);  // frees memory: the levels below have their own
  std::string remoteItem;
  std::string localFile;
  std::map<std::string, std::string> taken;  // listed names by their case-folded form
  std::size_t items = 0;
  for (const RemoteEntry& entry : listing.entries) {
    if (state_.StopRequested) return;
    if (entry.name == "." || entry.name == "..") continue;
    ++items;
    remoteItem.assign(remoteBase).append(entry.name);
    if (isType(entry, 'l')) {
      // Deliberate: the result is ignored; a link is neither followed nor fetched, whatever its target and
      // name.
      IsRemoteFolderLink(remoteItem);
    } else if (!acceptName(entry.name) || !isFree(entry, localDir, taken)) {
      // Logged and counted there.
    } else if (isType(entry, 'd')) {
      log_.AppendLog("Directory: " + PrintableName(remoteItem) + "\r\n", log_colour::kDirectory, true);
      WalkRemoteFolder(remoteItem, ParseListingDate(entry.dateText, services_.now()));
    } else {
      localFile.assign(localDir).append(entry.name);
      walkFile(localFile, remoteItem, entry);
    }
    if (!mayGoOn(remoteItem)) return;
    pump();
  }
  if (items == 0 && listing.unread.empty() && trail_.depth() == 1 && folder.complete)
    reportEmptyFolder(folder.currentDir, localDir);
}

/// Reports what the folder may contain beyond the entries that were read.
void TreeWalk::reportUnlisted(const Folder& folder, const RemoteListing& listing) {
  constexpr std::size_t kShown = 200;  // characters of a line
  if (!folder.listing.cut.empty())
    logError("The server has not listed all of the folder (" + folder.listing.cut + ")", folder.currentDir);
  if (folder.listing.hiddenFilesMissing)
    logError("The server has not listed hidden files this time", folder.currentDir);
  for (const std::string& line : listing.unread) {
    const std::string shown = FirstCharacters(ShownText(line), kShown);
    state_.countFailure(folder.currentDir, "a line of its listing cannot be read: " + shown);
    log_.AppendLog("Error: Unable to read a line of the listing of " + PrintableName(folder.currentDir) +
                       ": " + shown + "\r\n",
                   log_colour::kError, true);
  }
  const std::size_t others = listing.unreadCount - listing.unread.size();
  if (others != 0)
    logError("Unable to read " + std::to_string(others) + " more lines of the listing of", folder.currentDir);
}

bool TreeWalk::isLoop(const WalkTrail::Level& level, const std::string& currentDir) {
  if (!level.loops()) return false;
  logError(
      "The folder has the same listing as folders above it, as a link to one of them would; it is skipped",
      currentDir);
  return true;
}

/// Deliberate: the path stays cut. But what is fetched by a cut path is in another folder, if anywhere.
void TreeWalk::reportCutPath(const std::string& currentDir, const std::string& remoteBase) {
  const bool cut = remoteBase != currentDir && remoteBase != currentDir + '/';
  if (cut) {
    logError("Cut to " + PrintableName(remoteBase) +
                 ", which is not where its files are (see the setting NamesAsListed)",
             currentDir);
  }
}

/// A folder of the profile's own list with an empty listing may be one that the server does not let us read.
void TreeWalk::reportEmptyFolder(const std::string& currentDir, const std::string& localDir) {
  if (holdsFiles(localDir))
    return logError("The folder's listing is empty, but its copy holds files", currentDir);
  log_.AppendLog("The folder's listing is empty: " + PrintableName(currentDir) + "\r\n", log_colour::kWaiting,
                 false);
}

/// False once the login is given up: without a connection every further item would fail.
bool TreeWalk::mayGoOn(const std::string& remoteItem) {
  if (!state_.loginGivenUp) return true;
  if (!std::exchange(restReported_, true))
    logError("The login was given up; nothing after this item is backed up", remoteItem);
  return false;
}

/// Changes to `remotePath`, asks the server for the resulting path, and lists it. After a lost connection the
/// next login starts in another folder, so all steps are repeated. False when the folder is not to be walked.
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
    // Deliberate: if the folder cannot be entered, the current one is listed instead.
    std::string failure;
    const bool entered = retried([&] { session_.setCurrentRemoteDirectory(remotePath); });
    if (!entered) failure = reason_;
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
    if (!listed) failure = reason_;
    folder.complete = entered && listed;
    if (!folder.complete) state_.countFailure(remotePath, failure);
    return true;
  }
  if (!state_.StopRequested) logError("Unable to read the folder", remotePath);
  return false;
}

/// Whether the folder reported by the server may be walked; tested before anything local is touched.
bool TreeWalk::mayWalk(const std::string& currentDir) {
  if (const auto reason =
          LocalFolderRefusal(state_.LocalTargetFolder, currentDir, kLocalNameRules, state_.names)) {
    logError("Refused folder (" + *reason + ")", currentDir);
    return false;
  }
  if (trail_.contains(currentDir)) {
    logError("The folder is being walked already", currentDir);
    return false;
  }
  return true;
}

bool TreeWalk::prepareLocalFolder(const std::string& localDir, LocalDateTime folderDate) {
  if (folderExists(localDir)) {
    RemoveStaleTemporaries(localDir);
  } else if (!CreatePath(localDir)) {
    log_.AppendLog("Error: Unable to create directory: " + PrintableName(localDir), log_colour::kError, true);
    state_.countFailure(localDir, "unable to create directory");
    return false;
  }
  SetFileModifiedTime(localDir, folderDate, true);
  state_.anyFolderWalked = true;
  return true;
}

bool TreeWalk::acceptName(const std::string& name) {
  const auto reason = ListedNameRefusal(name);
  if (!reason) return true;
  logError("Refused name (" + *reason + ")", name);
  return false;
}

/// On a case-insensitive disk a second name would overwrite the first one's file. Windows disks usually are;
/// elsewhere only the file system itself can tell.
bool TreeWalk::isFree(const RemoteEntry& entry, const std::string& localDir,
                      std::map<std::string, std::string>& taken) {
  const bool windows = kLocalNameRules == LocalNameRules::windows;
  const auto [first, isNew] =
      taken.emplace(windows ? LocalNameKey(entry.name) : AsciiLower(entry.name), entry.name);
  if (isNew) return true;
  std::error_code failed;
  if (!windows &&
      (first->second == entry.name || !std::filesystem::equivalent(LocalPath(localDir + first->second),
                                                                   LocalPath(localDir + entry.name), failed)))
    return true;
  logError("Refused name (another name differs from it only in case)", entry.name);
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
  reason_.clear();
  Guarded([&] { there = SyncRemoteFile(localFile, remoteFile, entry); }, reason_);
  if (!there) state_.countFailure(remoteFile, reason_);
  services_.display.showCurrentFile("");
  services_.display.showProgress(0);
  state_.fileCount += 1;
  state_.byteCount += size;
  services_.display.setReportItem(state_.reportRow, ReportColumn::files,
                                  std::to_string(static_cast<std::int64_t>(state_.fileCount)));
  services_.display.setReportItem(state_.reportRow, ReportColumn::size, FormatSize(state_.byteCount));
  services_.display.repopulateReport();
}

/// Logs nothing.
bool TreeWalk::IsRemoteFolderLink(const std::string& path) {
  if (!state_.LoggedIn || !Guarded([&] { session_.SetFtpProperties(); })) return false;
  const FtpSession::LogSuppressor quiet(session_);
  return quillmoor::IsRemoteFolderLink(session_, path);
}

}  // namespace quillmoor
