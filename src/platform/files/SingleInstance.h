// One copy at a time for each user: of the desktop program, and of a backup run in whatever program.
#pragma once

#include <cstdint>

namespace quillmoor {

class SingleInstance {
 public:
  enum class Mark { desktop, run };

  /// Takes the mark, which the system itself gives back when the process ends, however it ends. A copy that
  /// cannot make the mark, though nobody denies it, counts as the only one.
  explicit SingleInstance(Mark mark);
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
