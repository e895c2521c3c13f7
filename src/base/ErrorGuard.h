// The error guard: a routine of the run may fail, the run goes on.
#pragma once

#include <exception>
#include <string>
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

/// The same; `reason` is what the exception says when one ends the routine, else it stays as it was.
template <class Routine>
bool Guarded(Routine&& routine, std::string& reason) {
  try {
    std::forward<Routine>(routine)();
    return true;
  } catch (const std::exception& error) {
    reason = error.what();
    return false;
  }
}

}  // namespace quillmoor
