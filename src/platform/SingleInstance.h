// One copy of the program at a time for each user.
#pragma once

#include <cstdint>

namespace quillmoor {

class SingleInstance {
 public:
  /// Takes the program's mark, which the system itself gives back when the process ends, however it ends. A
  /// copy that cannot make the mark, though nobody denies it, counts as the only one.
  SingleInstance();
  ~SingleInstance();
  SingleInstance(const SingleInstance&) = delete;
  SingleInstance& operator=(const SingleInstance&) = delete;

  /// Another copy had the mark.
  bool anotherIsRunning() const { return another_; }

 private:
  std::intptr_t handle_ = -1;
  bool another_ = false;
};

}  // namespace quillmoor
