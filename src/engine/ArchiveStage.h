// The archive stage: what a profile has downloaded is packed into one archive beside it, and copies of that
// go into further folders.
#pragma once

#include <string>
#include <vector>

#include "base/Pump.h"
#include "engine/ArchivePacker.h"
#include "engine/RunDisplay.h"
#include "engine/RunLog.h"
#include "engine/RunState.h"
#include "profiles/ApplicationSettings.h"

namespace quillmoor {

/// The folders that the setting `ZipCopies` names, in the order in which the copies are made.
std::vector<std::string> CopyDestinations(const std::string& ZipCopies);

class ArchiveStage {
 public:
  virtual ~ArchiveStage() = default;

  /// Packs the local target folder that `run` names and copies the archive. Called once for each profile
  /// that logged in, after its report row is finished; after a Stop too. What could not be packed or copied
  /// is a failure of `run`, also after a Stop. What it raises ends the stage only.
  virtual void CreateArchive(const std::string& profileId, RunState& run, RunLog& log,
                             RunDisplay& display) = 0;
};

/// The real one, by the archive settings.
class ZipArchiveStage final : public ArchiveStage {
 public:
  /// The settings, which are read anew for every archive and where a segment size that is too small is
  /// corrected, and the packer must outlive this. `stubPath` is the self-extractor's file; `pump` is called
  /// while copies are made.
  ZipArchiveStage(ApplicationSettings& settings, ArchivePacker& packer, std::string stubPath, Pump pump);

  void CreateArchive(const std::string& profileId, RunState& run, RunLog& log, RunDisplay& display) override;

 private:
  /// What the copies are made of: the files of the archive, `path` among them.
  struct Archive {
    std::string path;
    std::string fileName;
    std::vector<std::string> files;
  };

  Archive pack(RunState& run, const ZipSegmentOptions& segments, RunLog& log, RunDisplay& display);
  std::string password() const;
  void copyInto(const std::string& destination, const Archive& archive, RunState& run, RunLog& log);

  ApplicationSettings& settings_;
  ArchivePacker& packer_;
  std::string stubPath_;
  Pump pump_;
};

}  // namespace quillmoor
