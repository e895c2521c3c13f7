#include "controls/QuickPaint.h"

#include <wx/dc.h>

namespace quillmoor {

/// The toolkit asks the system for nothing that is not used.
void PaintQuickly(wxWindow&) {}

void DrawTextQuickly(wxDC& dc, const wxString& text, int x, int y) {
  dc.DrawText(text, x, y);
}

}  // namespace quillmoor
