// The main window's position: stored in twips, used in pixels, and always kept on a screen.
#pragma once

#include <vector>

#include "profiles/ApplicationSettings.h"

namespace quillmoor {

/// A rectangle of the desktop, in pixels.
struct PixelRect {
  int left = 0, top = 0, width = 0, height = 0;
  friend bool operator==(const PixelRect&, const PixelRect&) = default;
};

/// Twips per inch on any screen.
inline constexpr double kTwipsPerInch = 1440;
/// Pixels per inch of an unscaled screen, on which a pixel is 15 twips.
inline constexpr double kPlainPixelsPerInch = 96;

/// `MainLeft`, `MainTop`, `MainWidth` and `MainHeight` in pixels at that resolution. A value that is not a
/// number or is beyond any desktop is replaced by its default.
PixelRect StoredPlacement(const ApplicationSettings& settings, double pixelsPerInch);

/// The reverse: stores the four values.
void NotePlacement(ApplicationSettings& settings, PixelRect window, double pixelsPerInch);

/// Returns `window` moved, and shrunk if necessary, to lie entirely on the nearest of the `screens` (their
/// work areas). Without screens it is unchanged.
PixelRect WhollyOnScreen(PixelRect window, const std::vector<PixelRect>& screens);

/// The same for a window placed by the user, which is unchanged if enough of its upper edge is on a screen to
/// drag it.
PixelRect BroughtOntoScreen(PixelRect window, const std::vector<PixelRect>& screens);

}  // namespace quillmoor
