// Alt with the underlined letter of a caption or label focuses the control.
#pragma once

class wxWindow;

namespace quillmoor {

/// Makes mnemonics work for every visible and enabled control in the window. Needed on Windows, which
/// searches only the group that has the focus; does nothing where the toolkit searches the whole window.
void FollowMnemonics(wxWindow& window);

}  // namespace quillmoor
