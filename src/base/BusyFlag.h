// Prevents a routine from being re-entered through its own pump.
#pragma once

namespace quillmoor {

/// Sets the flag for its own lifetime, unless it is already set.
class BusyFlag {
 public:
  explicit BusyFlag(bool& flag) : flag_(flag), taken_(!flag) { flag_ = true; }
  ~BusyFlag() {
    if (taken_) flag_ = false;
  }
  BusyFlag(const BusyFlag&) = delete;
  BusyFlag& operator=(const BusyFlag&) = delete;

  bool taken() const { return taken_; }

 private:
  bool& flag_;
  bool taken_;
};

}  // namespace quillmoor
