// Progress on the program's taskbar button, if the desktop supports it.
#pragma once

class wxFrame;

namespace quillmoor {

/// `percent` is 0 to 100; negative: no run is in progress.
void ShowTaskbarProgress(wxFrame& frame, int percent);

}  // namespace quillmoor
