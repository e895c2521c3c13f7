// Desktops on X11 and Wayland have no such thing in common.
#include "shell/TaskbarProgress.h"

namespace quillmoor {

void ShowTaskbarProgress(wxFrame&, int) {}

}  // namespace quillmoor
