// Everything outside the engine that a backup run uses.
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

/// All references must outlive the controller.
struct RunServices {
  RunDisplay& display;
  Pump pump;
  /// Mutable: a stage may correct a value for the rest of the program's life.
  ApplicationSettings& settings;
  /// Extensions of files that are fetched as text, from LoadAsciiFilesTypes.
  std::vector<std::string> AsciiExtensions;
  std::string profilesFile;
  NetworkSource& network;
  DialUp& dialUp;
  RunActions& actions;
  ArchiveStage& archive;

  /// Acquires the run lock, which is held until the run has ended; returns null when another process holds
  /// it. Empty: no lock is used.
  std::function<std::shared_ptr<void>()> acquireRunLock = nullptr;
  std::function<LocalDateTime()> now = LocalNow;
  std::function<std::int64_t()> tick = TickCountMs;
  /// Sleeps between two calls of the pump while waiting.
  std::function<void(std::chrono::milliseconds)> sleep = [](std::chrono::milliseconds time) {
    std::this_thread::sleep_for(time);
  };
};

}  // namespace quillmoor
