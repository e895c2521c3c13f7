#include "controls/QuickPaint.h"

#include <wx/dc.h>

namespace quillmoor {

/// The toolkit does no unneeded work here.
void PaintQuickly(wxWindow&) {}

void DrawTextQuickly(wxDC& dc, const wxString& text, int x, int y) {
  dc.DrawText(text, x, y);
}

}  // namespace quillmoor
