// The pump: what a blocking operation calls so that the program stays alive while it waits.
#pragma once

#include <chrono>
#include <functional>

namespace quillmoor {

/// Handed to every component that blocks. In the windows it runs the event loop, on a terminal it draws the
/// status line and looks for Ctrl-C, in tests it is a hook. It may call back into the component that is
/// blocking, but there only `abort` and read-only members. May be empty.
using Pump = std::function<void()>;

/// A blocking operation calls the pump at least this often; components aim at half of it.
inline constexpr std::chrono::milliseconds kPumpInterval{20};

}  // namespace quillmoor
