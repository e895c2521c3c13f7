// The folder that a profile is backed up into, locked against other writers.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/files/TargetLock.h"

namespace quillmoor {

class LockedTarget {
 public:
  /// Creates the folder with its parents and locks it for the lifetime of this object. False when it is
  /// locked already. A folder that cannot be created, or not locked for lack of permissions, counts as
  /// acquired: the walk reports what it cannot write. Raises std::system_error as TargetLock does.
  bool acquire(const std::string& folder);

  /// Whether `other` is this folder or below it, whatever path was used for either.
  bool contains(const LockedTarget& other) const;

  /// Releases the lock and removes the folders that `acquire` created, unless something is in them.
  void releaseUnused();

 private:
  std::string key_;                   // canonical path with a trailing separator
  std::vector<std::string> created_;  // innermost first
  std::unique_ptr<TargetLock> lock_;
};

}  // namespace quillmoor
