// The pump of the windows: lets the program answer while a run blocks its thread.
#pragma once

#include <chrono>

namespace quillmoor {

/// Thrown by the pump when the program is to end. No std::exception, so that no error guard takes it for a
/// failure the run goes on from: it unwinds the run to whoever started it, files closed on the way.
struct ProgramEnding {};

class EventPump {
 public:
  /// Handles the events that wait, timers and drawing included; at most every few milliseconds, so that it
  /// may be called for every file. Raises ProgramEnding once the end has been asked for.
  void turn();

  /// From now on every turn raises ProgramEnding, but where a destructor on the way out is being served.
  void endProgram() { ending_ = true; }
  bool ending() const { return ending_; }

 private:
  void raiseIfEnding() const;

  std::chrono::steady_clock::time_point last_{};
  bool ending_ = false;
};

}  // namespace quillmoor
