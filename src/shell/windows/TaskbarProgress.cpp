#include "shell/TaskbarProgress.h"

#include <wx/frame.h>
#include <wx/taskbarbutton.h>

namespace quillmoor {

void ShowTaskbarProgress(wxFrame& frame, int percent) {
  wxTaskBarButton* const button = frame.MSWGetTaskBarButton();
  if (!button) return;
  if (percent < 0) {
    button->SetProgressState(wxTASKBAR_BUTTON_NO_PROGRESS);
    return;
  }
  button->SetProgressRange(100);
  button->SetProgressValue(percent);
}

}  // namespace quillmoor
