// The error guard: a routine of the run may fail, the run goes on.
#pragma once

#include <exception>
#include <utility>

namespace quillmoor {

/// Runs `routine` and returns true; when an exception ends it, swallows that and returns false. Whatever the
/// user should know has been written to the run log by then: components tell by their error events.
template <class Routine>
bool Guarded(Routine&& routine) {
  try {
    std::forward<Routine>(routine)();
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace quillmoor
