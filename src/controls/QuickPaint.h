// What drawing costs a window that is drawn many times a second.
#pragma once

class wxDC;
class wxString;
class wxWindow;

namespace quillmoor {

/// Spares the window and those that it lies in what the toolkit does at every paint event for nobody's sake.
/// Call it when the window has its place, and for none whose background or font is set from outside later.
void PaintQuickly(wxWindow& window);

/// A text of one line, in the font and the colour of `dc`.
void DrawTextQuickly(wxDC& dc, const wxString& text, int x, int y);

}  // namespace quillmoor
