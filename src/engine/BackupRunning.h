// Whether a backup run is in progress: the one answer that the run and the scheduler share.
#pragma once

namespace quillmoor {

/// The run from its request to its end. A run that was stopped still has to unwind; meanwhile the next one
/// may be requested. Used on the program's one thread.
class BackupRun {
 public:
  /// A run is to begin soon. Ended by `begin`, `refuse` and `stop`.
  void request() { requested_ = true; }
  /// The requested run does not begin.
  void refuse() { requested_ = false; }
  void begin() {
    requested_ = false;
    phase_ = Phase::running;
  }
  /// A confirmed Stop.
  void stop() {
    requested_ = false;
    if (phase_ == Phase::running) phase_ = Phase::unwinding;
  }
  void end() { phase_ = Phase::idle; }

  bool requestedOrRunning() const { return requested_ || phase_ == Phase::running; }
  bool onStack() const { return phase_ != Phase::idle; }

 private:
  enum class Phase { idle, running, unwinding };

  bool requested_ = false;
  Phase phase_ = Phase::idle;
};

inline BackupRun backupRun;

/// False again once the run has ended or a Stop was confirmed, also while that run is unwinding.
inline bool BackupRunning() {
  return backupRun.requestedOrRunning();
}

}  // namespace quillmoor
