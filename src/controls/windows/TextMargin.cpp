#include "controls/TextMargin.h"

namespace quillmoor {

/// Paragraphs have their own.
void SetRightMargin(wxTextCtrl&, int) {}

}  // namespace quillmoor
