// The focus of controls that are made of parts.
#pragma once

class wxWindow;

namespace quillmoor {

/// The focus of some controls goes to a part of theirs that the toolkit keeps to itself. Makes it known as a
/// focus of the control (wxEVT_CHILD_FOCUS), so that a form brings the control into view.
void TellInnerFocus(wxWindow& control);

}  // namespace quillmoor
