// The locks of a user that allow one copy of the desktop program and one backup run, in whatever program, at
// a time.
#pragma once

#include <cstdint>

namespace quillmoor {

class SingleInstance {
 public:
  enum class Lock { desktop, run };

  /// Acquires the lock, which the system releases when the process ends, however it ends. Where the lock
  /// cannot be created at all, this copy counts as the only one.
  explicit SingleInstance(Lock lock);
  ~SingleInstance();
  SingleInstance(const SingleInstance&) = delete;
  SingleInstance& operator=(const SingleInstance&) = delete;

  /// Another copy holds the lock.
  bool anotherIsRunning() const { return another_; }

 private:
  std::intptr_t handle_ = -1;
  bool another_ = false;
};

}  // namespace quillmoor
