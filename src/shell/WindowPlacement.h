// Where the main window stands: stored in twips, shown in pixels, and always somewhere a screen shows.
#pragma once

#include <vector>

#include "profiles/ApplicationSettings.h"

namespace quillmoor {

/// A rectangle of the desktop, in pixels.
struct PixelRect {
  int left = 0, top = 0, width = 0, height = 0;
  friend bool operator==(const PixelRect&, const PixelRect&) = default;
};

/// Twips to an inch, whatever the screen.
inline constexpr double kTwipsPerInch = 1440;
/// A twip on a screen that is not scaled is a fifteenth of a pixel.
inline constexpr double kPlainPixelsPerInch = 96;

/// `MainLeft`, `MainTop`, `MainWidth` and `MainHeight` on a screen of that resolution. What is stored as no
/// number, or as one that no desktop reaches, counts as missing.
PixelRect StoredPlacement(const ApplicationSettings& settings, double pixelsPerInch);

/// The reverse: sets the four values.
void NotePlacement(ApplicationSettings& settings, PixelRect window, double pixelsPerInch);

/// `window` moved onto the nearest of the `screens` (their areas for windows) so that nothing of it is
/// outside, and made as small as that is. No screens: as it is.
PixelRect WhollyOnScreen(PixelRect window, const std::vector<PixelRect>& screens);

/// The same for a window that the user has placed: it stays where it is while enough of its upper edge to
/// drag it by lies on a screen.
PixelRect BroughtOntoScreen(PixelRect window, const std::vector<PixelRect>& screens);

}  // namespace quillmoor
