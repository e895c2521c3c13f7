// Widths that texts of the user's font have to fit into.
#pragma once

#include <wx/window.h>

#include <algorithm>

namespace quillmoor {

/// Device-independent pixels as pixels of the window's screen, and more of them where its font is larger than
/// the usual one: what fits there fits everywhere.
inline int WidthForText(const wxWindow& window, int width) {
  constexpr int kUsualDigit = 8;  // its width, in device-independent pixels
  return std::max(window.FromDIP(width), width * window.GetTextExtent("0").x / kUsualDigit);
}

}  // namespace quillmoor
