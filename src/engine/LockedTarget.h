// The folder that a profile is backed up into, while nobody else writes there.
#pragma once

#include <memory>
#include <string>

#include "platform/TargetLock.h"

namespace quillmoor {

class LockedTarget {
 public:
  /// Creates the folder with its parents and locks it for as long as this lives. False when another run holds
  /// it. A folder that cannot be created is not locked, and counts as acquired: the walk reports it. Raises
  /// std::system_error as TargetLock does.
  bool acquire(const std::string& folder);

  /// Releases the lock, and removes the folder if acquiring has created it and nothing is in it.
  void releaseUnused();

 private:
  std::string created_;  // the folder, where acquiring has created it
  std::unique_ptr<TargetLock> lock_;
};

}  // namespace quillmoor
