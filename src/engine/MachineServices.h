// What a run is handed on this machine: the one place where it is chosen, for the console and the window.
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
  /// `settings` must outlive this. `pump` is called by whatever blocks.
  MachineServices(ApplicationSettings& settings, std::string profilesFile, Pump pump);
  MachineServices(const MachineServices&) = delete;
  MachineServices& operator=(const MachineServices&) = delete;

  /// For one controller; `display` and this must outlive it.
  RunServices forRun(RunDisplay& display);

  /// Acquires the run lock now for the next run of a controller, which takes it over. False when a run of
  /// another program of this user holds it.
  bool reserveRun();

  ApplicationSettings& settings;
  const std::string profilesFile;
  const Pump pump;
  /// These may be replaced before `forRun`.
  NetworkSource network;
  std::function<LocalDateTime()> now = LocalNow;

  /// The component that the run dials with.
  DialUp& dialUp() { return *dialUp_; }
  /// The one that the run calls addresses with; aborted by a window that goes away in the middle of a run.
  WebRequest& webRequest() { return webRequest_; }

 private:
  std::shared_ptr<void> acquireRunLock();

  std::shared_ptr<void> reserved_;  // the run lock, for a run that is about to start
  std::weak_ptr<void> held_;        // the run lock while a run of this program has it
  HttpRequest webRequest_;
  ZipPacker packer_;
  std::unique_ptr<DialUp> dialUp_;
  std::unique_ptr<RunActions> actions_;
  std::unique_ptr<ArchiveStage> archive_;
};

}  // namespace quillmoor
