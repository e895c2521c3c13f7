// The error guard: a routine of the run may fail, the run goes on.
#pragma once

#include <exception>
#include <functional>
#include <source_location>
#include <string>
#include <utility>

namespace quillmoor {

/// Receives programming errors (std::logic_error, std::bad_alloc) that a guard has swallowed, as the text
/// "Internal error in ROUTINE: ...". Handles those of the thread that created it, while it exists; the one
/// created last is called. Must be destroyed on that thread, in reverse order. `handle` must not raise.
class InternalErrorHandler {
 public:
  explicit InternalErrorHandler(std::function<void(const std::string& text)> handle);
  ~InternalErrorHandler();
  InternalErrorHandler(const InternalErrorHandler&) = delete;
  InternalErrorHandler& operator=(const InternalErrorHandler&) = delete;

  /// Sets what is called as well, on every thread, with or without a handler; null for nothing. For tests.
  static void setObserver(void (*observe)(const std::string& text));

 private:
  friend void ReportSwallowed(const std::exception& error, const std::source_location& where) noexcept;

  std::function<void(const std::string& text)> handle_;
  InternalErrorHandler* before_;
};

/// Writes the routine's name and what the exception says to standard error if the environment variable
/// QUILLMOOR_DEBUG is 1, and passes a programming error to the handler.
void ReportSwallowed(const std::exception& error, const std::source_location& where) noexcept;

/// Runs `routine` and returns true; when an exception ends it, swallows that and returns false. Whatever the
/// user should know has been written to the run log by then: components report it by their error events.
template <class Routine>
bool Guarded(Routine&& routine, const std::source_location& where = std::source_location::current()) {
  try {
    std::forward<Routine>(routine)();
    return true;
  } catch (const std::exception& error) {
    ReportSwallowed(error, where);
    return false;
  }
}

/// The same; `reason` is what the exception says when one ends the routine, otherwise it stays as it was.
template <class Routine>
bool Guarded(Routine&& routine, std::string& reason,
             const std::source_location& where = std::source_location::current()) {
  try {
    std::forward<Routine>(routine)();
    return true;
  } catch (const std::exception& error) {
    reason = error.what();
    ReportSwallowed(error, where);
    return false;
  }
}

}  // namespace quillmoor
