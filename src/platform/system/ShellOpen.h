// The shell's "Open": starts a program, or opens a document or an address in its associated program.
#pragma once

#include <string>

namespace quillmoor {

/// Results of ShellOpen above this mean success.
inline constexpr int kShellOpenFailed = 32;

/// Opens `target` (UTF-8) without parameters or a window of its own, and returns at once: the program started
/// is not waited for and outlives this one. The whole text is the target's name, without quotes or
/// parameters. Raises nothing; a result up to kShellOpenFailed is an error: 2 not found, 5 access denied, 8
/// out of resources, 11 not a program, 31 no associated program.
///
/// On Windows this is ShellExecute. On Linux an executable file is started, also one found in PATH when the
/// target is a plain name; anything else is passed to xdg-open, which counts as success whatever xdg-open
/// does. The program started runs in a session of its own, with /dev/null as its input and output.
int ShellOpen(const std::string& target);

}  // namespace quillmoor
