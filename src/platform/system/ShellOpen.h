// The shell's "Open": a program is started, a document or an address goes to the program that it belongs to.
#pragma once

#include <string>

namespace quillmoor {

/// A result of ShellOpen above this is success.
inline constexpr int kShellOpenFailed = 32;

/// Opens `target` (UTF-8) without parameters and without a window of its own, and returns at once: what is
/// started is not waited for and outlives this program. The whole text is the name of the target; there are
/// no quotes or parameters in it. Raises nothing; a result up to kShellOpenFailed tells what went wrong: 2
/// there is nothing of that name, 5 it may not be started, 8 the system has no room for it, 11 it is no
/// program, 31 there is nothing to open it with.
///
/// On Windows this is ShellExecute. On Linux a file that may be executed is started, also one that PATH has
/// when the target is a plain name; anything else is handed to xdg-open, and that has success whatever
/// xdg-open makes of it. What is started there runs in a session of its own, reads nothing and has nowhere to
/// write to.
int ShellOpen(const std::string& target);

}  // namespace quillmoor
