#include "engine/MachineServices.h"

#include <utility>

#include "engine/TransferType.h"
#include "platform/files/SingleInstance.h"
#include "platform/network/NetworkAlive.h"
#include "platform/system/ProgramFolder.h"

namespace quillmoor {
namespace {

constexpr const char* kSelfExtractorFile = "MsSFX.bin";

}  // namespace

MachineServices::MachineServices(ApplicationSettings& settings_, std::string profilesFile_, Pump pump_)
    : settings(settings_),
      profilesFile(std::move(profilesFile_)),
      pump(std::move(pump_)),
      network(IsNetworkAlive),
      packer_(pump),
      dialUp_(MakeDialUp(pump)),
      actions_(std::make_unique<ConfiguredActions>(settings, webRequest_)),
      archive_(
          std::make_unique<ZipArchiveStage>(settings, packer_, ProgramFolder() + kSelfExtractorFile, pump)) {
  webRequest_.pump = pump;
}

RunServices MachineServices::forRun(RunDisplay& display) {
  return {.display = display,
          .pump = pump,
          .settings = settings,
          .AsciiExtensions = LoadAsciiFilesTypes(LoadAsciiExtensions()),
          .profilesFile = profilesFile,
          .network = network,
          .dialUp = *dialUp_,
          .actions = *actions_,
          .archive = *archive_,
          .acquireRunLock = [this] { return acquireRunLock(); },
          .now = now};
}

bool MachineServices::reserveRun() {
  // A run of this program that is still unwinding after a Stop holds the lock; the next run waits for its
  // end.
  if (!held_.expired()) return true;
  reserved_ = acquireRunLock();
  return reserved_ != nullptr;
}

/// Null when another process holds it.
std::shared_ptr<void> MachineServices::acquireRunLock() {
  if (reserved_) return std::exchange(reserved_, nullptr);
  const auto lock = std::make_shared<SingleInstance>(SingleInstance::Lock::run);
  if (lock->anotherIsRunning()) return nullptr;
  held_ = lock;
  return lock;
}

}  // namespace quillmoor
