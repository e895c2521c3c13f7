// What a backup run is handed: the world it shows itself to, asks and waits on.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "base/Pump.h"
#include "connectivity/DialUp.h"
#include "connectivity/mNetworkConnection.h"
#include "engine/ArchiveStage.h"
#include "engine/RunActions.h"
#include "engine/RunDisplay.h"
#include "platform/system/LocalTime.h"
#include "profiles/ApplicationSettings.h"

namespace quillmoor {

/// Everything referred to must outlive the controller that is given this.
struct RunServices {
  RunDisplay& display;
  Pump pump;
  /// Mutable: a stage may correct a value for the rest of the program's life.
  ApplicationSettings& settings;
  /// Extensions of files that are fetched as text, as LoadAsciiFilesTypes gives them.
  std::vector<std::string> AsciiExtensions;
  std::string profilesFile;
  NetworkSource& network;
  DialUp& dialUp;
  RunActions& actions;
  ArchiveStage& archive;

  /// Acquires the run lock, which is held until the run has ended; returns null when another process holds
  /// it. Empty: there is no lock, and no other process makes runs.
  std::function<std::shared_ptr<void>()> acquireRunLock = nullptr;
  std::function<LocalDateTime()> now = LocalNow;
  std::function<std::int64_t()> tick = TickCountMs;
  /// How a wait passes the time between two turns of the pump.
  std::function<void(std::chrono::milliseconds)> sleep = [](std::chrono::milliseconds time) {
    std::this_thread::sleep_for(time);
  };
};

}  // namespace quillmoor
