// The run controller: performs one backup run, profile by profile.
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

/// Runs every enabled profile in turn on the caller's thread, calling the pump. A failure inside a run is
/// logged and the run continues.
class RunController {
 public:
  explicit RunController(RunServices services);
  RunController(const RunController&) = delete;
  RunController& operator=(const RunController&) = delete;

  /// Performs a run. Returns one result for each enabled profile that was begun, in order, preceded by one
  /// without a name if something failed that belongs to no profile. Does nothing and returns none while an
  /// earlier run is still unwinding after a Stop (`active`): try again later.
  std::vector<ProfileResult> RunBackup();

  /// Whether the last RunBackup logged an error and returned at once because another process was running a
  /// backup: two at once would write into the same folders.
  bool refused() const { return refused_; }

  /// Whether a run is on the stack, whatever BackupRunning says.
  bool active() const { return backupRun.onStack(); }

  /// Stops the run after the user has confirmed; called from inside the pump. Aborts the transfer in progress
  /// and lets the run unwind. The archive stage and the actions after the run still follow.
  void Stop();

  const RunState& state() const { return state_; }
  /// For the picture of the connection's state.
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
  std::vector<LockedTarget> targets_;  // of the profiles begun so far; held until the run's end
  RunFailures internalErrors_;
  bool refused_ = false;
};

}  // namespace quillmoor
