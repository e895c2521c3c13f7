// The real services of a run, created in one place for both the console program and the window.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "base/Pump.h"
#include "connectivity/DialUp.h"
#include "connectivity/mNetworkConnection.h"
#include "engine/ArchivePacker.h"
#include "engine/ArchiveStage.h"
#include "engine/RunActions.h"
#include "engine/RunServices.h"
#include "platform/net/WebRequest.h"
#include "platform/system/LocalTime.h"
#include "profiles/ApplicationSettings.h"

namespace quillmoor {

class MachineServices {
 public:
  /// `settings` must outlive this. `pump` is called by every blocking operation.
  MachineServices(ApplicationSettings& settings, std::string profilesFile, Pump pump);
  MachineServices(const MachineServices&) = delete;
  MachineServices& operator=(const MachineServices&) = delete;

  /// For one controller; `display` and this must outlive it.
  RunServices forRun(RunDisplay& display);

  /// Acquires the run lock for the next run, which takes it over. False when a run of another process of this
  /// user holds it.
  bool reserveRun();

  ApplicationSettings& settings;
  const std::string profilesFile;
  const Pump pump;
  /// These may be replaced before `forRun`.
  NetworkSource network;
  std::function<LocalDateTime()> now = LocalNow;

  /// The component that dials for a run.
  DialUp& dialUp() { return *dialUp_; }
  /// The web request that a run calls addresses with; a window that closes during a run aborts it.
  WebRequest& webRequest() { return webRequest_; }

 private:
  std::shared_ptr<void> acquireRunLock();

  std::shared_ptr<void> reserved_;  // run lock of a run that is about to start
  std::weak_ptr<void> held_;        // run lock held by a run of this program
  HttpRequest webRequest_;
  ZipArchivePacker packer_;
  std::unique_ptr<DialUp> dialUp_;
  std::unique_ptr<RunActions> actions_;
  std::unique_ptr<ArchiveStage> archive_;
};

}  // namespace quillmoor
