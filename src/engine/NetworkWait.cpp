#include "engine/NetworkWait.h"

#include <algorithm>
#include <chrono>
#include <string>

#include "base/BusyFlag.h"
#include "base/ErrorGuard.h"
#include "base/LenientNumber.h"
#include "engine/LogColours.h"

namespace quillmoor {
namespace {

constexpr std::int64_t kSliceMs = 10;  // half of the longest interval promised between calls of the pump

std::string secondsBeforeRetrying(const char* what, std::int32_t seconds) {
  return what + std::to_string(seconds) + " Seconds Before Retrying...\r\n";
}

}  // namespace

void NetworkWait::WaitForNetwork() {
  const BusyFlag busy(state_.networkWaitBusy);
  if (!busy.taken()) return;
  Guarded([&] {
    if (services_.settings.AutoDial == 1) {
      dialUntilConnected();
    } else {
      waitForLan();
    }
  });
}

/// Deliberate: does not test StopRequested; only a network ends this wait.
void NetworkWait::waitForLan() {
  IsNetworkAvailable(services_.network);  // refreshes a stale first answer
  while (!IsNetworkAvailable(services_.network)) {
    log_.AppendLog(secondsBeforeRetrying("No LAN Connection. Waiting ", services_.settings.ConnectionDelay),
                   log_colour::kWaiting, false);
    WaitSeconds(services_.settings.ConnectionDelay);
  }
}

bool NetworkWait::anyConnectionIsUp() const {
  return services_.dialUp.State() == kDialUpConnected || services_.dialUp.IsDialUpConnected();
}

bool NetworkWait::dialledConnectionIsUp() const {
  return services_.dialUp.State() == kDialUpConnected && services_.dialUp.IsDialUpConnected();
}

void NetworkWait::dialUntilConnected() {
  while (!anyConnectionIsUp() && !state_.StopRequested) {
    // Read again each time: during the pump the user may choose another entry.
    const std::string entry = services_.settings.AutoDialUpConnection;
    log_.AppendLog("Dialing the connection " + entry + "\r\n", log_colour::kDialling, false);
    if (!entry.empty()) {
      Guarded([&] { services_.dialUp.HangUp(); });
      Guarded([&] { services_.dialUp.Dial(entry); });
    }
    if (state_.StopRequested) break;
    // Deliberate: requires both, although the loop ends with either.
    if (!dialledConnectionIsUp()) waitBeforeRetry();
  }
  // After a Stop a dial still in progress is of no use.
  if (state_.StopRequested) abortDial();
}

void NetworkWait::abortDial() {
  Guarded([&] {
    if (services_.dialUp.Busy()) services_.dialUp.Abort();
  });
}

void NetworkWait::HangUpDialUp() {
  if (services_.settings.AutoHangUp != 1) return;
  log_.AppendLog("Disconnecting Dial-up connection.\r\n", log_colour::kDialling, true);
  if (anyConnectionIsUp()) {
    Guarded([&] { services_.dialUp.HangUpDialUp(); });
    abortDial();
    Guarded([&] { services_.dialUp.HangUp(); });
  }
  log_.AppendLog("Disconnected.\r\n", log_colour::kWaiting, true);
}

void NetworkWait::waitBeforeRetry(std::int32_t times) {
  const std::int32_t seconds = MultiplyLong(services_.settings.ConnectionDelay, times);
  log_.AppendLog(secondsBeforeRetrying("Waiting ", seconds), log_colour::kWaiting, false);
  WaitSeconds(seconds);
}

void NetworkWait::WaitSeconds(std::int32_t seconds) {
  // Only the product must fit 32 bits; the sum has 64 and cannot overflow.
  const std::int64_t end = services_.tick() + MultiplyLong(seconds, 1000);
  for (;;) {
    if (services_.pump) services_.pump();
    const std::int64_t left = end - services_.tick();
    if (left < 0) {
      // With a negative delay, loops that wait here must not spin.
      if (seconds < 0) services_.sleep(std::chrono::milliseconds(kSliceMs));
      return;
    }
    services_.sleep(std::chrono::milliseconds(std::clamp<std::int64_t>(left, 1, kSliceMs)));
  }
}

void NetworkWait::pumpAndRest() {
  if (services_.pump) services_.pump();
  services_.sleep(std::chrono::milliseconds(kSliceMs));
}

}  // namespace quillmoor
