// The state of one backup run, shared by its controller, its session and its tree walk.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "engine/RunFailures.h"
#include "engine/RunProfileFields.h"
#include "engine/mCreatePath.h"
#include "platform/ftp/FtpClient.h"

namespace quillmoor {

/// How the operation that was awaited last has ended, as the client's events tell.
enum class TransferOutcomes { pending = 0, completed = 1, failedOrStopped = 2 };

struct RunState {
  /// Set by a confirmed Stop, cleared at the start of a run. Every loop of the run but the wait for a LAN
  /// tests it.
  bool StopRequested = false;
  /// Result of the last login attempt; cleared by Stop.
  bool LoggedIn = false;
  /// As the setting NamesAsListed was at the start of the run.
  FolderNames names = FolderNames::cut;
  bool networkWaitBusy = false;
  bool connectBusy = false;

  TransferOutcomes TransferOutcome = TransferOutcomes::pending;
  /// The method whose end TransferOutcome reports.
  FtpMethod ExpectedMethod = FtpMethod::command;
  std::int64_t transferStartTick = 0;  // ms, of RunServices::tick

  /// Section name of the profile being run; never its `ID` key.
  std::string currentProfileId;
  RunProfileFields profile;
  std::size_t reportRow = 0;

  // Of the current profile.
  double fileCount = 0;  // skipped files included
  double byteCount = 0;
  /// Folders, files, archives and copies that were to be had and are not.
  RunFailures failures;
  /// How often the server has refused the login.
  int loginRefusals = 0;
  /// The login has failed as often as the settings allow; the profile tries no further one.
  bool loginGivenUp = false;
  bool defaultDirFailed = false;  // and is counted
  bool anyFolderWalked = false;   // a local folder was prepared

  void beginProfile() {
    fileCount = byteCount = 0;
    failures = {};
    loginRefusals = 0;
    loginGivenUp = defaultDirFailed = anyFolderWalked = false;
  }

  /// Records a failure, unless it is what a Stop has left undone.
  void countFailure(std::string_view name, std::string_view reason) {
    if (!StopRequested) failures.add(name, reason);
  }

  std::string localFolderName;    // the profile's name, with a date when every run has its own folder
  std::string LocalTargetFolder;  // SaveTo + localFolderName
  std::string localTargetPath;    // the same with a separator at its end
};

}  // namespace quillmoor
