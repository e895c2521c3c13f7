// Column widths that fit texts in the user's font.
#pragma once

#include <wx/dataview.h>
#include <wx/window.h>

#include <algorithm>

namespace quillmoor {

/// Converts a width in device-independent pixels to pixels of the window's screen, and enlarges it if the
/// window's font is larger than the default one.
inline int WidthForText(const wxWindow& window, int width) {
  constexpr int kUsualDigit = 8;  // its width, in device-independent pixels
  return std::max(window.FromDIP(width), width * window.GetTextExtent("0").x / kUsualDigit);
}

/// Ends texts that are wider than their column with dots; not every toolkit does so by default.
inline void EllipsizeCells(wxDataViewCtrl& list) {
  for (unsigned column = 0; column < list.GetColumnCount(); ++column)
    list.GetColumn(column)->GetRenderer()->EnableEllipsize(wxELLIPSIZE_END);
}

}  // namespace quillmoor
