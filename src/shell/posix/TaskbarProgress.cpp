// X11 and Wayland have no common interface for it.
#include "shell/TaskbarProgress.h"

namespace quillmoor {

void ShowTaskbarProgress(wxFrame&, int) {}

}  // namespace quillmoor
