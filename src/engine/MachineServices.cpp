#include "engine/MachineServices.h"

#include <utility>

#include "engine/TransferType.h"
#include "platform/NetworkAlive.h"

namespace quillmoor {

MachineServices::MachineServices(ApplicationSettings& settings_, std::string profilesFile_, Pump pump_)
    : settings(settings_),
      profilesFile(std::move(profilesFile_)),
      pump(std::move(pump_)),
      network(IsNetworkAlive),
      dialUp_(MakeDialUp(pump)),
      actions_(std::make_unique<NoRunActions>(settings)),
      archive_(std::make_unique<NoArchiveStage>(settings)) {}

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
          .now = now};
}

}  // namespace quillmoor
