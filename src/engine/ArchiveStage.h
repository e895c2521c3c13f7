// The archive stage: packs what a profile has downloaded into one archive beside it, and copies that archive
// into further folders.
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

/// The folders named by the setting `ZipCopies`, in the order in which they are copied to.
std::vector<std::string> CopyDestinations(const std::string& ZipCopies);

class ArchiveStage {
 public:
  virtual ~ArchiveStage() = default;

  /// Packs the local target folder that `run` names and copies the archive. Called once for each profile that
  /// logged in, after its report row is finished, even after a Stop. Adds what could not be packed or copied
  /// to the failures of `run`, even after a Stop. An exception ends this stage only.
  virtual void CreateArchive(const std::string& profileId, RunState& run, RunLog& log,
                             RunDisplay& display) = 0;
};

/// Packs and copies as the archive settings say.
class ZipArchiveStage final : public ArchiveStage {
 public:
  /// The settings and the packer must outlive this. The settings are read again for every archive; a segment
  /// size that is too small is corrected in them. `stubPath` is the self-extractor's file; `pump` is called
  /// during copying.
  ZipArchiveStage(ApplicationSettings& settings, ArchivePacker& packer, std::string stubPath, Pump pump);

  void CreateArchive(const std::string& profileId, RunState& run, RunLog& log, RunDisplay& display) override;

 private:
  /// What is copied: all files of the archive, including `path`.
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
