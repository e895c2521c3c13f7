// One file of the tree walk: decides whether it is up to date, and fetches it if not.
#include <optional>
#include <string>

#include "engine/ListingDate.h"
#include "engine/LogColours.h"
#include "engine/TransferType.h"
#include "engine/TreeWalk.h"
#include "engine/mFileLib.h"
#include "engine/mGeneral.h"

namespace quillmoor {
namespace {

/// What a file's time reads as after `listed` was set on it: a time in the hour that a clock change skips
/// does not exist, and without this would always differ.
LocalDateTime asFileTime(LocalDateTime listed) {
  return UtcToLocal(LocalToUtc(listed));
}

}  // namespace

bool TreeWalk::SyncRemoteFile(const std::string& localFile, const std::string& remoteFile,
                              const RemoteEntry& entry) {
  const LocalDateTime remoteDate = ParseListingDate(entry.dateText, services_.now());
  if (services_.settings.BackupMode != 1 && isUpToDate(localFile, remoteDate)) {
    log_.AppendLog("Skipped: ", log_colour::kError, false);
    log_.AppendLog("File upto date\r\n", log_colour::kUpToDate, true);
    return true;
  }
  return download(localFile, remoteFile, entry, remoteDate);
}

/// Deliberate: the comparison is reversed. Only a file listed as older than the copy is fetched again; one
/// listed as newer counts as up to date.
bool TreeWalk::isUpToDate(const std::string& localFile, LocalDateTime remoteDate) {
  FileDates dates;
  if (GetFileDates(localFile, dates, true)) return false;  // no such file, or unreadable
  log_.AppendLog(GeneralDateText(remoteDate) + " : " + GeneralDateText(dates.modified) + "\r\n",
                 log_colour::kRetrieving, true);
  if (asFileTime(remoteDate) >= dates.modified) return true;
  log_.AppendLog("Time is less\r\n", log_colour::kRetrieving, true);
  return false;
}

/// A lost connection is reopened; the type must then be sent again, or bytes would arrive as text.
bool TreeWalk::download(const std::string& localFile, const std::string& remoteFile, const RemoteEntry& entry,
                        LocalDateTime remoteDate) {
  const std::string type = std::string("TYPE ") + ChooseTransferType(entry.name, services_.AsciiExtensions);
  const auto listedSize = entry.sizeExact ? std::optional(entry.sizeBytes) : std::nullopt;
  std::int32_t attempts = 0;
  bool fetched = false;
  for (std::int64_t round = 0; round < rounds() && !state_.StopRequested; ++round) {
    session_.ConnectAndLogin();
    if (!session_.connected()) break;
    session_.SetFtpProperties();
    session_.sendAhead({type}, true);
    retried([&] { session_.command(type); });
    if (!session_.connected()) continue;
    fetched = retried([&] { session_.getFile(remoteFile, localFile, listedSize); }, attempts);
    if (fetched || session_.connected() || attempts >= services_.settings.FtpRetryCount) break;
  }
  // After a refused TYPE I the file is fetched as text. It does not get the listed time, so that an
  // incremental run fetches it again; with that time it would always count as up to date.
  if (fetched && type == "TYPE I" && session_.asciiType()) {
    logError("Received as text (TYPE A), because the server refused TYPE I", remoteFile);
    return true;
  }
  // Deliberate: also when the file could not be fetched; an older copy then has the listed time.
  SetFileModifiedTime(localFile, remoteDate, true);
  return fetched;
}

}  // namespace quillmoor
