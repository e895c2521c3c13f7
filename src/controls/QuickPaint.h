// Faster drawing for windows that are drawn many times a second.
#pragma once

class wxDC;
class wxString;
class wxWindow;

namespace quillmoor {

/// Turns off unneeded work of the toolkit at every paint event of the window and its parents. Call it after
/// the window has its final parent; its background and font must not be changed from outside afterwards.
void PaintQuickly(wxWindow& window);

/// Draws one line of text in the font and the colour of `dc`.
void DrawTextQuickly(wxDC& dc, const wxString& text, int x, int y);

}  // namespace quillmoor
