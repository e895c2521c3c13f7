// Texts of the user's font and the widths they have to fit into.
#pragma once

#include <wx/dataview.h>
#include <wx/window.h>

#include <algorithm>

namespace quillmoor {

/// Device-independent pixels as pixels of the window's screen, and more of them where its font is larger than
/// the usual one: what fits there fits everywhere.
inline int WidthForText(const wxWindow& window, int width) {
  constexpr int kUsualDigit = 8;  // its width, in device-independent pixels
  return std::max(window.FromDIP(width), width * window.GetTextExtent("0").x / kUsualDigit);
}

/// A text that is wider than its column ends in dots; not every toolkit shows that by itself.
inline void EllipsizeCells(wxDataViewCtrl& list) {
  for (unsigned column = 0; column < list.GetColumnCount(); ++column)
    list.GetColumn(column)->GetRenderer()->EnableEllipsize(wxELLIPSIZE_END);
}

}  // namespace quillmoor
