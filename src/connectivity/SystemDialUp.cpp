#include "connectivity/SystemDialUp.h"

#include <exception>
#include <utility>

#include "connectivity/DialUpStates.h"
#include "connectivity/mRasAPI.h"

namespace quillmoor {

std::unique_ptr<DialUp> MakeDialUp(Pump pump) {
  return std::make_unique<SystemDialUp>(MakeRemoteAccess(std::move(pump)));
}

SystemDialUp::SystemDialUp(std::unique_ptr<RemoteAccess> access, std::function<std::int64_t()> tick)
    : access_(std::move(access)), tick_(std::move(tick)) {}

bool SystemDialUp::Busy() {
  processStates();
  return phase_ == Phase::dialling || phase_ == Phase::closing;
}

std::int32_t SystemDialUp::State() {
  processStates();
  return state_;
}

std::vector<std::string> SystemDialUp::Entries() {
  return access_->entries();
}

void SystemDialUp::Dial(const std::string& entry) {
  processStates();
  if (phase_ == Phase::dialling && entry == entry_) return;
  if (phase_ == Phase::idle) return start(entry);
  if (phase_ == Phase::dialling) beginClosing(kDialUpAborting);
  if (phase_ == Phase::connected) beginClosing(kDialUpClosing);
  next_ = entry;
}

void SystemDialUp::HangUp() {
  processStates();
  if (phase_ == Phase::connected) beginClosing(kDialUpClosing);
}

void SystemDialUp::Abort() {
  processStates();
  next_.clear();
  if (phase_ == Phase::dialling) beginClosing(kDialUpAborting);
}

bool SystemDialUp::IsDialUpConnected() {
  return mRasAPI::IsDialUpConnected(*access_);
}

bool SystemDialUp::HangUpDialUp() {
  return mRasAPI::HangUpDialUp(*access_);
}

void SystemDialUp::processStates() {
  if (processing_) return;  // called from an onStateChange handler or from inside the pump
  const struct Flag {
    explicit Flag(bool& flag_) : flag(flag_) { flag = true; }
    ~Flag() { flag = false; }
    bool& flag;
  } processing(processing_);
  for (const std::int32_t state : access_->takeStates()) {
    if (state == kDialUpDisconnected) {
      phase_ = Phase::idle;
    } else if (phase_ == Phase::closing) {
      continue;  // late state of a connection that is being ended
    } else if (state == kDialUpConnected) {
      phase_ = Phase::connected;
    }
    show(state);
  }
  if (phase_ == Phase::dialling && tick_() - diallingSince_ > kDialTimeoutMs) beginClosing(kDialUpAborting);
  if (phase_ == Phase::idle && !next_.empty()) {
    try {
      start(std::exchange(next_, {}));
    } catch (const std::exception&) {
      // There is no caller to report to; the state shows the failure.
    }
  }
}

void SystemDialUp::start(const std::string& entry) {
  phase_ = Phase::dialling;
  entry_ = entry;
  diallingSince_ = tick_();
  show(kDialUpStarting);
  starting_ = true;
  try {
    access_->dial(entry);
  } catch (...) {
    starting_ = false;
    phase_ = Phase::idle;
    show(kDialUpDisconnected);
    throw;
  }
  starting_ = false;
  if (phase_ == Phase::closing) access_->close();  // aborted from inside the pump
}

void SystemDialUp::beginClosing(std::int32_t state) {
  phase_ = Phase::closing;
  show(state);
  if (!starting_) access_->close();
}

void SystemDialUp::show(std::int32_t state) {
  if (std::exchange(state_, state) != state && onStateChange) onStateChange(state);
}

}  // namespace quillmoor
