// Progress on the program's button in the taskbar, where the desktop has such a thing.
#pragma once

class wxFrame;

namespace quillmoor {

/// 0 to 100; below 0: no run is going on.
void ShowTaskbarProgress(wxFrame& frame, int percent);

}  // namespace quillmoor
