// The dial-up component, based on the system's remote access.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "connectivity/DialUp.h"
#include "platform/system/LocalTime.h"

namespace quillmoor {

/// A dial that has not connected after this time is aborted, so that a hanging line does not block the next
/// attempt for ever.
inline constexpr std::int64_t kDialTimeoutMs = 180'000;

class SystemDialUp final : public DialUp {
 public:
  explicit SystemDialUp(std::unique_ptr<RemoteAccess> access,
                        std::function<std::int64_t()> tick = TickCountMs);

  bool Busy() override;
  std::int32_t State() override;
  std::vector<std::string> Entries() override;
  /// If a connection is being ended, dials after that.
  void Dial(const std::string& entry) override;
  void HangUp() override;
  void Abort() override;
  bool IsDialUpConnected() override;
  bool HangUpDialUp() override;

 private:
  enum class Phase { idle, dialling, connected, closing };

  void processStates();
  void start(const std::string& entry);
  void beginClosing(std::int32_t state);
  void show(std::int32_t state);

  std::unique_ptr<RemoteAccess> access_;
  std::function<std::int64_t()> tick_;
  Phase phase_ = Phase::idle;
  std::int32_t state_ = kDialUpDisconnected;
  std::string entry_;               // the entry being dialled or connected
  std::string next_;                // the entry to dial after the current connection is closed
  std::int64_t diallingSince_ = 0;  // ms of tick_
  bool processing_ = false;
  bool starting_ = false;  // inside RemoteAccess::dial, which may pump
};

}  // namespace quillmoor
