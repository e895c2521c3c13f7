// The stage that packs what a profile has downloaded.
#pragma once

#include <string>

#include "engine/RunLog.h"
#include "engine/RunState.h"
#include "profiles/ApplicationSettings.h"

namespace quillmoor {

class ArchiveStage {
 public:
  virtual ~ArchiveStage() = default;

  /// Packs the local target folder that `run` names and copies the archive. Called once for each profile
  /// that logged in, after its report row is finished; after a Stop too. What it raises ends the stage only.
  virtual void CreateArchive(const std::string& profileId, const RunState& run, RunLog& log) = 0;
};

/// For a build that makes no archives: says so in the log when one, or a copy, is asked for.
class NoArchiveStage final : public ArchiveStage {
 public:
  /// The settings must outlive this.
  explicit NoArchiveStage(const ApplicationSettings& settings) : settings_(settings) {}

  void CreateArchive(const std::string& profileId, const RunState& run, RunLog& log) override;

 private:
  const ApplicationSettings& settings_;
};

}  // namespace quillmoor
