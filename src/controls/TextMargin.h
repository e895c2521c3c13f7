// The right margin of a text that wraps, which not every toolkit takes from its paragraphs.
#pragma once

class wxTextCtrl;

namespace quillmoor {

/// Keeps so many pixels free at the right edge of a multi-line control where the right indents of its
/// paragraphs do not; does nothing where they do.
void SetRightMargin(wxTextCtrl& text, int pixels);

}  // namespace quillmoor
