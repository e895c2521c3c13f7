// Starting the program with the user's session.
#pragma once

namespace quillmoor::mAutoRun {

enum class Mode { off = 0, once = 1, always = 2 };

/// Sets or removes this program's entry in the machine's Run and RunOnce keys. Nothing is written when the
/// entry is right already, so that no write permission is needed then. The entry is deliberately the
/// program's path without ".exe". On Linux `always` also keeps an autostart entry of the desktop; `once` has
/// none, since desktops know no single start. Raises RegistryError.
void SetAutoRun(Mode mode);

}  // namespace quillmoor::mAutoRun
