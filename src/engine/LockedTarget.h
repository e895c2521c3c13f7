// The folder that a profile is backed up into, while nobody else writes there.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/files/TargetLock.h"

namespace quillmoor {

class LockedTarget {
 public:
  /// Creates the folder with its parents and locks it for as long as this lives. False when a lock is on it
  /// already. A folder that cannot be created, or in which no lock can be made for want of rights, is not
  /// locked and counts as acquired: the walk reports what it cannot write. Raises std::system_error as
  /// TargetLock does.
  bool acquire(const std::string& folder);

  /// Whether `other` is this folder or lies in it, by whatever path either was named.
  bool holds(const LockedTarget& other) const;

  /// Releases the lock, and removes the folders that acquiring has created if nothing is in them.
  void releaseUnused();

 private:
  std::string key_;                   // the folder by its one true path, with a separator at its end
  std::vector<std::string> created_;  // the innermost first
  std::unique_ptr<TargetLock> lock_;
};

}  // namespace quillmoor
