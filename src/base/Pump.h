// The pump: called by blocking operations so that the program stays responsive while they wait.
#pragma once

#include <chrono>
#include <functional>

namespace quillmoor {

/// Passed to every component that blocks. In the windows it runs the event loop, on a terminal it draws the
/// status line and checks for Ctrl-C, in tests it is a hook. It may call back into the blocking component,
/// but only `abort` and read-only members. May be empty.
using Pump = std::function<void()>;

/// A blocking operation calls the pump at least this often; components aim at half of it.
inline constexpr std::chrono::milliseconds kPumpInterval{20};

}  // namespace quillmoor
