// A flag that keeps a routine from being entered again by its own pump.
#pragma once

namespace quillmoor {

/// Takes the flag for its own lifetime unless somebody else has it.
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
