// Keys with Alt that lead to a control by the underlined letter of its caption or label.
#pragma once

class wxWindow;

namespace quillmoor {

/// Lets them lead to every control within the window that is seen and enabled. Where the toolkit sees to that
/// itself, nothing is done; Windows looks no further than the group that has the focus.
void FollowMnemonics(wxWindow& window);

}  // namespace quillmoor
