// The state of one backup run, shared by its controller, session and tree walk.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "engine/RunFailures.h"
#include "engine/mCreatePath.h"
#include "platform/ftp/FtpClient.h"
#include "profiles/SiteProfile.h"

namespace quillmoor {

/// How the last expected operation ended, from the client's events.
enum class TransferOutcomes { pending = 0, completed = 1, failedOrStopped = 2 };

struct RunState {
  /// Set by a confirmed Stop, cleared at the start of a run. Every loop over folders, files, profiles
  /// and attempts tests it, except the wait for a LAN.
  bool StopRequested = false;
  /// Result of the last login attempt; cleared by Stop.
  bool LoggedIn = false;
  /// From the setting NamesAsListed at the start of the run.
  FolderNames names = FolderNames::cut;
  bool networkWaitBusy = false;
  bool connectBusy = false;

  /// The method that was begun last.
  FtpMethod ExpectedMethod = FtpMethod::command;
  std::int64_t transferStartTick = 0;  // ms, of RunServices::tick

  /// Section name of the profile being run; never its `ID` key.
  std::string currentProfileId;
  SiteProfile profile;
  std::size_t reportRow = 0;

  // For the current profile.
  double fileCount = 0;  // skipped files included
  double byteCount = 0;
  /// Folders, files, archives and copies that could not be made.
  RunFailures failures;
  /// How often the server has refused the login.
  int loginRefusals = 0;
  /// The login has failed as often as the settings allow, or for its certificate; the profile does not try
  /// again.
  bool loginGivenUp = false;
  bool defaultDirFailed = false;  // and the failure is counted
  bool anyFolderWalked = false;   // a local folder was prepared

  void beginProfile() {
    fileCount = byteCount = 0;
    failures = {};
    loginRefusals = 0;
    loginGivenUp = defaultDirFailed = anyFolderWalked = false;
  }

  /// Records a failure, unless a Stop is its cause.
  void countFailure(std::string_view name, std::string_view reason) {
    if (!StopRequested) failures.add(name, reason);
  }

  // Kept as the protocol of a transfer asks, and read by nobody: failures come as exceptions.
  TransferOutcomes TransferOutcome = TransferOutcomes::pending;  // of ExpectedMethod

  std::string localFolderName;    // the profile's name, followed by a date if every run has its own folder
  std::string LocalTargetFolder;  // SaveTo + localFolderName
  std::string localTargetPath;    // LocalTargetFolder with a trailing separator
};

}  // namespace quillmoor
