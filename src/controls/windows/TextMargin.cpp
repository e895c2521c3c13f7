#include "controls/TextMargin.h"

namespace quillmoor {

/// Paragraphs keep their right indents here.
void SetRightMargin(wxTextCtrl&, int) {}

}  // namespace quillmoor
