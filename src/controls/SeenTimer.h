// A timer that keeps a form's labels up to date. It ticks slowly while the form is not visible, so that a
// program in the notification area lets the processor sleep.
#pragma once

#include <wx/timer.h>
#include <wx/toplevel.h>
#include <wx/window.h>

#include <functional>
#include <utility>

#include "base/ErrorGuard.h"
#include "controls/EventPump.h"

namespace quillmoor {

class SeenTimer : public wxTimer {
 public:
  /// Starts ticking every `interval` milliseconds. `form` must outlive this. An exception from `tick` is
  /// swallowed; the next tick tries again. While `alsoUnseen` returns true, the timer ticks for an invisible
  /// form, too.
  void begin(wxWindow* form, int interval, std::function<void()> tick,
             std::function<bool()> alsoUnseen = {}) {
    form_ = form;
    interval_ = interval;
    tick_ = std::move(tick);
    alsoUnseen_ = std::move(alsoUnseen);
    Start(interval_);
    form_->Bind(wxEVT_SHOW, [this](wxShowEvent& event) {
      wake();
      event.Skip();
    });
  }

  /// To be called when the form may be visible again.
  void wake() {
    if (IsRunning() && GetInterval() != interval_) Start(interval_);
  }

 private:
  static constexpr int kRest = 2000;  // milliseconds

  void Notify() override {
    if (isSeen() || neededUnseen()) {
      wake();
      tickGuarded();
    } else if (GetInterval() < kRest) {
      Start(kRest);
    }
  }

  bool neededUnseen() {
    bool needed = false;
    if (alsoUnseen_) Guarded([&] { needed = alsoUnseen_(); });
    return needed;
  }

  bool isSeen() const {
    const auto* const window = dynamic_cast<wxTopLevelWindow*>(wxGetTopLevelParent(form_));
    return form_->IsShownOnScreen() && !(window && window->IsIconized());
  }

  /// Some toolkits call this from C code, which exceptions must not cross.
  void tickGuarded() {
    try {
      Guarded(tick_);
    } catch (const ProgramEnding&) {
      // The code that requested the end handles it.
    }
  }

  wxWindow* form_ = nullptr;
  int interval_ = 0;
  std::function<void()> tick_;
  std::function<bool()> alsoUnseen_;
};

}  // namespace quillmoor
