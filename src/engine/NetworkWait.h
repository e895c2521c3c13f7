// Waits for a network: until a LAN is available, or until a dial-up entry has connected.
#pragma once

#include <cstdint>

#include "engine/RunLog.h"
#include "engine/RunServices.h"
#include "engine/RunState.h"

namespace quillmoor {

class NetworkWait {
 public:
  /// All arguments must outlive this.
  NetworkWait(const RunServices& services, RunState& state, RunLog& log)
      : services_(services), state_(state), log_(log) {}

  /// Returns when a network is available. In LAN mode it waits without limit, even after a Stop; dialling
  /// ends at a Stop. Does nothing when re-entered.
  void WaitForNetwork();

  /// Dials `AutoDialUpConnection` until any dial-up connection is up, or until a Stop.
  void dialUntilConnected();

  /// Whether both the dialling component and the system report the connection as up.
  bool dialledConnectionIsUp() const;

  /// At the end of a run: hangs up if the setting AutoHangUp is on.
  void HangUpDialUp();

  /// Pumps for this long, at least once. Raises std::overflow_error when the time in milliseconds does not
  /// fit 32 bits.
  void WaitSeconds(std::int32_t seconds);

  /// Logs the delay before a retry, which is `ConnectionDelay` multiplied by `times`, then waits for it.
  void waitBeforeRetry(std::int32_t times = 1);

  /// Pumps once and sleeps a few milliseconds: for loops that have nothing to wait on.
  void pumpAndRest();

 private:
  bool anyConnectionIsUp() const;
  void abortDial();
  void waitForLan();

  const RunServices& services_;
  RunState& state_;
  RunLog& log_;
};

}  // namespace quillmoor
