#include "engine/RunController.h"

#include <set>
#include <utility>

#include "base/ErrorGuard.h"
#include "engine/BackupRunning.h"
#include "engine/FtpConnection.h"
#include "engine/LogColours.h"
#include "engine/SafeName.h"
#include "engine/mCreatePath.h"
#include "engine/mGeneral.h"
#include "platform/files/FileSet.h"
#include "platform/files/LocalPath.h"
#include "profiles/SiteProfileStore.h"
#include "profiles/mIni.h"

namespace quillmoor {
namespace {

constexpr const char* kNothingYet = " - ";

/// Shows the hourglass cursor during its lifetime.
class BusyCursor {
 public:
  explicit BusyCursor(RunDisplay& display) : display_(display) { display_.showBusyCursor(true); }
  ~BusyCursor() { display_.showBusyCursor(false); }
  BusyCursor(const BusyCursor&) = delete;
  BusyCursor& operator=(const BusyCursor&) = delete;

 private:
  RunDisplay& display_;
};

/// Ends the run however it is left, also by the end of the program.
class RunFrame {
 public:
  RunFrame() { backupRun.begin(); }
  ~RunFrame() { backupRun.end(); }
  RunFrame(const RunFrame&) = delete;
  RunFrame& operator=(const RunFrame&) = delete;
};

/// Closes the session however a profile ends: the next profile must not find it open.
class SessionFrame {
 public:
  explicit SessionFrame(FtpSession& session) : session_(session) {}
  ~SessionFrame() { session_.close(); }
  SessionFrame(const SessionFrame&) = delete;
  SessionFrame& operator=(const SessionFrame&) = delete;

 private:
  FtpSession& session_;
};

}  // namespace

RunController::RunController(RunServices services)
    : services_(std::move(services)),
      log_(services_.display),
      network_(services_, state_, log_),
      session_(services_, state_, log_, network_),
      walk_(services_, state_, log_, session_) {}

std::vector<ProfileResult> RunController::RunBackup() {
  if (active()) return {};
  const std::shared_ptr<void> lock = services_.acquireRunLock ? services_.acquireRunLock() : nullptr;
  refused_ = services_.acquireRunLock && !lock;
  if (refused_) {
    backupRun.refuse();
    services_.display.showRunning(false);
    logError("Error: Another backup run is in progress. This one is not started.\r\n");
    return {};
  }
  state_.StopRequested = false;
  const RunFrame frame;
  state_.names = services_.settings.NamesAsListed == 1 ? FolderNames::asListed : FolderNames::cut;
  state_.networkWaitBusy = false;
  state_.connectBusy = false;
  services_.display.showRunning(true);
  const InternalErrorHandler internalErrors([&](const std::string& text) {
    logError(PrintableName(text) + "\r\n");
    internalErrors_.add(text, "");
  });
  Guarded([&] { RunAllProfiles(); });
  services_.display.showRunning(false);
  targets_.clear();
  return std::exchange(results_, {});
}

void RunController::Stop() {
  state_.StopRequested = true;
  state_.LoggedIn = false;
  session_.abort();
  services_.display.showRunning(false);
  backupRun.stop();
}

void RunController::RunAllProfiles() {
  std::vector<std::string> ProfileQueue;
  std::string reason;
  if (!Guarded([&] { ProfileQueue = LoadSitesInfo(services_.profilesFile); }, reason)) {
    logError("Error: Unable to read the profiles: " + PrintableName(reason) + "\r\n");
    resultOf("").problem = "Unable to read the profiles: " + reason;
  }
  endKilledRuns(ProfileQueue);
  network_.WaitForNetwork();
  {
    const BusyCursor hourglass(services_.display);
    Guarded([&] { services_.actions.RunBeforeActions(log_); });
  }
  for (const std::string& profileId : ProfileQueue) {
    if (state_.StopRequested) break;
    state_.currentProfileId = profileId;
    if (!Guarded([&] { RunProfile(profileId); }, reason)) resultOf(profileId).problem = reason;
  }
  {
    const BusyCursor hourglass(services_.display);
    Guarded([&] { services_.actions.RunAfterActions(log_); });
  }
  Guarded([&] { network_.HangUpDialUp(); });
  reportInternalErrors();
  logFailures();
  log_.AppendLog("Finished all at: " + FinishedText(services_.now()) + "\r\n", log_colour::kEndOfRun, true);
  log_.AppendLog("Good Bye.\r\n", log_colour::kEndOfRun, true);
}

void RunController::RunProfile(const std::string& profileId) {
  state_.beginProfile();
  walk_.beginProfile();
  state_.profile = LoadProfileForRun(profileId, services_.profilesFile);
  if (state_.profile.Status != 1) return;
  results_.push_back({profileId, false, "", {}});
  addReportRow(profileId);
  logFrameHeader(profileId);
  std::string problem = prepareTarget(profileId);
  if (problem.empty()) problem = lockTarget();
  if (!problem.empty()) {
    logError("Error: " + problem + "\r\n");
    resultOf(profileId).problem = std::move(problem);
    finishReportRow("Failed", log_colour::kError);
    return;
  }
  const bool loggedIn = runSession();
  if (!state_.anyFolderWalked) targets_.back().releaseUnused();
  if (!loggedIn) {  // deliberate: its row keeps "Running"
    if (!state_.StopRequested) resultOf(profileId).problem = "Unable to login";
    return;
  }
  if (state_.StopRequested) {
    finishReportRow("Stoped", log_colour::kError);
  } else {
    finishReportRow("Completed", log_colour::kEndOfProfile);
  }
  resultOf(profileId).completed = !state_.StopRequested;
  archiveProfile(profileId);
  resultOf(profileId).failures = state_.failures;
}

/// The profile's result; created if it has none yet.
ProfileResult& RunController::resultOf(const std::string& profileId) {
  if (results_.empty() || results_.back().profileId != profileId)
    results_.push_back({profileId, false, "", {}});
  return results_.back();
}

void RunController::archiveProfile(const std::string& profileId) {
  const std::size_t counted = state_.failures.count();
  std::string reason;
  const bool ended =
      Guarded([&] { services_.archive.CreateArchive(profileId, state_, log_, services_.display); }, reason);
  // Most errors that end the stage were counted where they were logged.
  if (!ended && state_.failures.count() == counted) state_.failures.add("archive", reason);
}

/// A killed run may have left an archive's previous files in a hidden folder: restores them before anything
/// else.
void RunController::endKilledRuns(const std::vector<std::string>& profileIds) {
  std::set<std::string> folders;
  for (const std::string& id : profileIds) {
    const std::string SaveTo = mIni::ReadValue(id, "SaveTo", services_.profilesFile);
    folders.insert(AddTrailingSeparator(SaveTo, false, kLocalSeparator, state_.names));
  }
  for (const std::string& copies : CopyDestinations(services_.settings.ZipCopies)) folders.insert(copies);
  for (const std::string& folder : folders) {
    std::string reason;
    if (Guarded([&] { EndKilledExchanges(folder); }, reason)) continue;
    logError("Error: Unable to restore the files of an interrupted run: " + PrintableName(reason) + "\r\n");
    resultOf("").failures.add(folder, reason);
  }
}

/// They are failures of the run, whichever profile they came with.
void RunController::reportInternalErrors() {
  const RunFailures errors = std::exchange(internalErrors_, {});
  if (errors.empty()) return;
  if (results_.empty() || !results_.front().profileId.empty())
    results_.insert(results_.begin(), {"", false, "", {}});
  results_.front().failures.add(errors);
}

void RunController::logFailures() {
  for (const ProfileResult& result : results_) {
    for (const std::string& line : FailureLines(result)) logError(line + "\r\n");
  }
}

void RunController::addReportRow(const std::string& profileId) {
  RunDisplay& display = services_.display;
  const std::size_t row = display.addReportRow();
  state_.reportRow = row;
  display.setReportItem(row, ReportColumn::profile, profileId);
  display.setReportItem(row, ReportColumn::started, ReportTimeText(services_.now()));
  display.setReportItem(row, ReportColumn::finished, kNothingYet);
  display.setReportItem(row, ReportColumn::status, "Running");
  display.setReportItem(row, ReportColumn::files, kNothingYet);
  display.setReportItem(row, ReportColumn::errors, kNothingYet);  // and never changes
  display.setReportItem(row, ReportColumn::size, kNothingYet);
  display.repopulateReport();
}

void RunController::logFrameHeader(const std::string& profileId) {
  log_.AppendLog(kLogRule, log_colour::kFrameRule, true);
  log_.AppendLog(std::string(8, ' ') + profileId + "\r\n", log_colour::kFrameTitle, true);
  log_.AppendLog(kLogRule, log_colour::kFrameRule, true);
  log_.AppendLog("Started at: " + TimeText(services_.now()) + "\r\n", log_colour::kWaiting, true);
  log_.zeroLineCount();
}

/// Determines the profile's local folder. Returns why the profile cannot be run, or "".
std::string RunController::prepareTarget(const std::string& profileId) {
  const std::string problem = WhyNoLogin(state_.profile);
  if (!problem.empty()) return problem;
  const FolderNames names = state_.names;
  if (names == FolderNames::cut && IsNetworkPath(state_.profile.SaveTo)) {
    return "SaveTo is a network path, and one of its two leading backslashes would be cut off: map " +
           state_.profile.SaveTo + " to a drive letter, or set NamesAsListed to 1";
  }
  // The name becomes a folder below SaveTo, and must not lead out of it.
  if (ListedNameRefusal(profileId) || RemotePathRefusal("/" + profileId, kLocalNameRules, names))
    return "The profile's name cannot be the name of a folder: " + PrintableName(profileId);
  state_.profile.SaveTo = AddTrailingSeparator(state_.profile.SaveTo, false, kLocalSeparator, names);
  state_.localFolderName = profileId;
  if (services_.settings.UniqueBackup != 0) state_.localFolderName += DatedFolderSuffix(services_.now());
  state_.LocalTargetFolder = state_.profile.SaveTo + state_.localFolderName;
  state_.localTargetPath = AddTrailingSeparator(state_.LocalTargetFolder, false, kLocalSeparator, names);
  return "";
}

/// Ensures that neither an earlier profile of this run nor another run writes into the profile's folder.
/// Returns why the profile cannot be run, or "".
std::string RunController::lockTarget() {
  const std::string folder = LocalFolderFor(state_.LocalTargetFolder, "/", kLocalSeparator, state_.names);
  std::string reason;
  bool locked = false;
  LockedTarget target;
  if (!Guarded([&] { locked = target.acquire(folder); }, reason)) return reason;
  // Tested before `locked`, since an earlier profile of this run may itself hold the lock.
  for (const LockedTarget& earlier : targets_) {
    if (earlier.contains(target))
      return "An earlier profile of this run has written into the same folder: " + PrintableName(folder);
  }
  if (!locked) return "Another backup run is writing into the same folder: " + PrintableName(folder);
  targets_.push_back(std::move(target));
  return "";
}

/// Performs the profile from its own actions to the logout. False when the login failed.
bool RunController::runSession() {
  Guarded([&] { services_.actions.RunProfileActions(state_.profile, log_); });
  const SessionFrame frame(session_);
  session_.ConnectAndLogin();
  if (!session_.connected() || !state_.LoggedIn) {
    logError("Error: Unable to login\r\n");
    return false;
  }
  for (const std::string& folder : state_.profile.Folders) {
    if (state_.StopRequested) break;
    if (!folder.empty()) walk_.WalkRemoteFolder(folder, services_.now());
  }
  log_.AppendLog("Finished at: " + TimeText(services_.now()) + "\r\n", log_colour::kEndOfProfile, true);
  if (!state_.StopRequested) session_.Logout();
  return true;
}

void RunController::finishReportRow(const char* status, Colour colour) {
  RunDisplay& display = services_.display;
  const std::size_t row = state_.reportRow;
  display.setReportItem(row, ReportColumn::finished, ReportTimeText(services_.now()));
  display.setReportItem(row, ReportColumn::status, status);
  display.setReportColour(row, ReportColumn::status, colour);
  display.repopulateReport();
}

void RunController::logError(const std::string& text) {
  log_.AppendLog(text, log_colour::kError, true);
}

}  // namespace quillmoor
