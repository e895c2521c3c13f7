// The lock on a folder that one process writes into, across users, programs and, where a share has locks,
// machines.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace quillmoor {

/// Holds a lock on the file ".quillmoor-lock" inside the folder. The system releases it when the process
/// ends, however it ends; the next lock takes the file over. The folder keeps its time of last change, as far
/// as the user may set it.
class TargetLock {
 public:
  /// Returns null when another lock holds the folder, one of this process included. The folder must exist.
  /// Where the file system has no locks it succeeds, see `enforced`. Raises std::system_error, whose text
  /// names the file, when the lock file cannot be created or opened for any other reason.
  static std::unique_ptr<TargetLock> acquire(const std::string& folder);
  /// Removes the lock file and releases the lock.
  ~TargetLock();
  TargetLock(const TargetLock&) = delete;
  TargetLock& operator=(const TargetLock&) = delete;

  /// False where the file system has no locks: then others may hold the folder as well.
  bool enforced() const { return enforced_; }

 private:
  TargetLock(std::string folder, std::intptr_t handle, bool enforced);

  std::string folder_;
  std::intptr_t handle_;
  bool enforced_;
};

}  // namespace quillmoor
