// Starting the program with the user's session.
#pragma once

namespace quillmoor::mAutoRun {

enum class Mode { off = 0, once = 1, always = 2 };

/// Sets or removes this program's entry in the machine's Run and RunOnce keys. What is so already is not
/// written: with the entry as it is to be, no right to write there is needed. The entry is the program's path
/// without ".exe", on purpose. On Linux `always` also keeps an autostart entry of the desktop; `once` has no
/// such entry, for desktops know no single start. Raises RegistryError.
void SetAutoRun(Mode mode);

}  // namespace quillmoor::mAutoRun
