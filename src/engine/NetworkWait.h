// Waiting for a network: until a LAN is there, or until a dial-up entry has connected.
#pragma once

#include <cstdint>

#include "engine/RunLog.h"
#include "engine/RunServices.h"
#include "engine/RunState.h"

namespace quillmoor {

class NetworkWait {
 public:
  /// All must outlive this.
  NetworkWait(const RunServices& services, RunState& state, RunLog& log)
      : services_(services), state_(state), log_(log) {}

  /// Returns when there is a network. Without one a run in LAN mode waits for ever, a Stop notwithstanding;
  /// dialling ends at a Stop. Does nothing when entered again from inside itself.
  void WaitForNetwork();

  /// Dials `AutoDialUpConnection` until a dial-up connection, made here or elsewhere, is up or a Stop.
  void dialUntilConnected();

  /// Both the component that dials and the system say that the connection is up.
  bool dialledConnectionIsUp() const;

  /// At the end of a run, when the settings ask for it.
  void HangUpDialUp();

  /// Pumps for that long; at least once. Raises std::overflow_error when the time in milliseconds does not
  /// fit 32 bits.
  void WaitSeconds(std::int32_t seconds);

  /// Before every retry: says how long, then waits so many times `ConnectionDelay`.
  void waitBeforeRetry(std::int32_t times = 1);

  /// One turn of the pump and a rest of a few milliseconds: for loops that have nothing to wait on.
  void breathe();

 private:
  bool anyConnectionIsUp() const;
  void abortDial();
  void waitForLan();

  const RunServices& services_;
  RunState& state_;
  RunLog& log_;
};

}  // namespace quillmoor
