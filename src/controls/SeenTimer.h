// A timer that keeps a form's labels fresh: it ticks while the form is seen, and rests while it is not, so
// that a program in the notification area lets the processor sleep.
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
  /// Begins to tick every `interval` milliseconds. `form` must outlive this. A tick that raises has failed,
  /// and the next one tries again. While `alsoUnseen` holds it ticks for a form that is not seen, too.
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

  /// The form may be seen again.
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

  /// Some toolkits call from C, which no exception may pass.
  void tickGuarded() {
    try {
      Guarded(tick_);
    } catch (const ProgramEnding&) {
      // Whoever asked for the end sees to it.
    }
  }

  wxWindow* form_ = nullptr;
  int interval_ = 0;
  std::function<void()> tick_;
  std::function<bool()> alsoUnseen_;
};

}  // namespace quillmoor
