#include "controls/EventPump.h"

#include <wx/evtloop.h>

#include <exception>

namespace quillmoor {
namespace {

constexpr std::chrono::milliseconds kShortestPause{8};

}  // namespace

void EventPump::turn() {
  raiseIfEnding();
  const auto now = std::chrono::steady_clock::now();
  if (now - last_ < kShortestPause) return;
  if (wxEventLoopBase* const loop = wxEventLoopBase::GetActive()) loop->YieldFor(wxEVT_CATEGORY_ALL);
  // Measured from the end, so that slow drawing does not starve the run.
  last_ = std::chrono::steady_clock::now();
  raiseIfEnding();
}

void EventPump::raiseIfEnding() const {
  if (ending_ && std::uncaught_exceptions() == 0) throw ProgramEnding{};
}

}  // namespace quillmoor
