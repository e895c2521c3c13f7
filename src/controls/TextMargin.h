// The right margin of wrapped text, which not every toolkit takes from its paragraphs.
#pragma once

class wxTextCtrl;

namespace quillmoor {

/// Keeps `pixels` free at the right edge of a multi-line control if the toolkit ignores the right indents of
/// paragraphs; otherwise does nothing.
void SetRightMargin(wxTextCtrl& text, int pixels);

}  // namespace quillmoor
