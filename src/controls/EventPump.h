// The pump of the windows: keeps the program responsive while a run blocks its thread.
#pragma once

#include <chrono>

namespace quillmoor {

/// Thrown by the pump when the program must end. Not a std::exception, so that no error guard swallows it: it
/// unwinds the run to its caller, closing files on the way.
struct ProgramEnding {};

class EventPump {
 public:
  /// Handles pending events, including timers and drawing, at most every few milliseconds, so that it may be
  /// called for every file. Raises ProgramEnding after `endProgram`.
  void turn();

  /// Makes every later turn raise ProgramEnding, except during stack unwinding.
  void endProgram() { ending_ = true; }
  bool ending() const { return ending_; }

 private:
  void raiseIfEnding() const;

  std::chrono::steady_clock::time_point last_{};
  bool ending_ = false;
};

}  // namespace quillmoor
