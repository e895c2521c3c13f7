// The dial-up component over what the system offers.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "connectivity/DialUp.h"
#include "platform/system/LocalTime.h"

namespace quillmoor {

/// A dial that has come to nothing after this long is aborted: a line that hangs must not keep the next
/// attempt away for ever.
inline constexpr std::int64_t kDialPatienceMs = 180'000;

class SystemDialUp final : public DialUp {
 public:
  explicit SystemDialUp(std::unique_ptr<RemoteAccess> access,
                        std::function<std::int64_t()> tick = TickCountMs);

  bool Busy() override;
  std::int32_t State() override;
  std::vector<std::string> Entries() override;
  /// While a connection is being ended the dial waits for that.
  void Dial(const std::string& entry) override;
  void HangUp() override;
  void Abort() override;
  bool IsDialUpConnected() override;
  bool HangUpDialUp() override;

 private:
  enum class Phase { idle, dialling, connected, closing };

  void takeIn();
  void start(const std::string& entry);
  void beginClosing(std::int32_t state);
  void show(std::int32_t state);

  std::unique_ptr<RemoteAccess> access_;
  std::function<std::int64_t()> tick_;
  Phase phase_ = Phase::idle;
  std::int32_t state_ = kDialUpDisconnected;
  std::string entry_;               // being dialled or connected
  std::string next_;                // to be dialled when what is being closed is closed
  std::int64_t diallingSince_ = 0;  // ms of tick_
  bool takingIn_ = false;
  bool starting_ = false;  // inside the system's dial, which may pump
};

}  // namespace quillmoor
