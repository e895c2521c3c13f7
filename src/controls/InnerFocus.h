// The focus of controls that consist of several windows.
#pragma once

class wxWindow;

namespace quillmoor {

/// Reports the focus of a control's inner parts, which the toolkit hides, as the control's own
/// (wxEVT_CHILD_FOCUS), so that a form scrolls the control into view.
void ReportInnerFocus(wxWindow& control);

}  // namespace quillmoor
