// Converts between this program's colours and the toolkit's.
#pragma once

#include <wx/colour.h>

#include "controls/ColourMath.h"

namespace quillmoor {

inline wxColour ToWx(Rgb colour) {
  return {colour.red, colour.green, colour.blue};
}
inline Rgb FromWx(const wxColour& colour) {
  return {colour.Red(), colour.Green(), colour.Blue()};
}

}  // namespace quillmoor
