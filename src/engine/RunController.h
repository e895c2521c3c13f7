// The run controller: one backup run from its start to its end, profile by profile.
#pragma once

#include <string>
#include <vector>

#include "engine/BackupRunning.h"
#include "engine/FtpSession.h"
#include "engine/LockedTarget.h"
#include "engine/NetworkWait.h"
#include "engine/RunLog.h"
#include "engine/RunResult.h"
#include "engine/RunServices.h"
#include "engine/RunState.h"
#include "engine/TreeWalk.h"

namespace quillmoor {

/// Runs every enabled profile in turn, on the caller's thread, pumping. Whatever fails inside a run is told
/// in the log and the run goes on.
class RunController {
 public:
  explicit RunController(RunServices services);
  RunController(const RunController&) = delete;
  RunController& operator=(const RunController&) = delete;

  /// The whole run; returns one result for each enabled profile that it came to, in order, and before them
  /// one without a name where something failed that belongs to no profile. While an earlier
  /// run is still unwinding after a Stop (`active`) it changes nothing and returns none: try again later.
  std::vector<ProfileResult> RunBackup();

  /// The last RunBackup returned at once, with a line in the log: another program's run was going on, and two
  /// at once would write into the same folders.
  bool refused() const { return refused_; }

  /// A run is on the stack, whatever BackupRunning says.
  bool active() const { return backupRun.onStack(); }

  /// A confirmed Stop, called from inside the pump: ends the transfer in progress and lets the run unwind.
  /// The archive stage and the actions after the run still follow.
  void Stop();

  const RunState& state() const { return state_; }
  /// For the connection picture.
  FtpState ftpState() const { return session_.state(); }

 private:
  void RunAllProfiles();
  void RunProfile(const std::string& profileId);
  void addReportRow(const std::string& profileId);
  void logFrameHeader(const std::string& profileId);
  std::string prepareTarget(const std::string& profileId);
  std::string lockTarget();
  void endKilledRuns(const std::vector<std::string>& profileIds);
  bool runSession();
  void archiveProfile(const std::string& profileId);
  void reportInternalErrors();
  void logFailures();
  ProfileResult& resultOf(const std::string& profileId);
  void finishReportRow(const char* status, Colour colour);
  void logError(const std::string& text);

  RunServices services_;
  RunState state_;
  RunLog log_;
  NetworkWait network_;
  FtpSession session_;
  TreeWalk walk_;
  std::vector<ProfileResult> results_;
  std::vector<LockedTarget> targets_;  // of the profiles that this run has come to, held until its end
  RunFailures internalErrors_;
  bool refused_ = false;
};

}  // namespace quillmoor
