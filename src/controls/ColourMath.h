// Colour calculations for all controls; independent of any window.
#pragma once

#include <cstdint>

namespace quillmoor {

struct Rgb {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;
  friend bool operator==(const Rgb&, const Rgb&) = default;
};

/// `from` where `share` is 0, `to` where it is 1.
Rgb Mix(Rgb from, Rgb to, double share);

/// The contrast ratio of Web Content Accessibility Guidelines 2.1: 1 (unreadable) to 21.
double ContrastRatio(Rgb a, Rgb b);

/// White or black, whichever has more contrast to `background`.
Rgb InkOn(Rgb background);

/// `text`, or the nearest shade towards white or black that has the contrast `ratio` on the background. Keeps
/// coloured texts readable in light and dark themes. The guidelines require a ratio of 4.5.
Rgb ReadableOn(Rgb text, Rgb background, double ratio = 4.5);

/// For texts whose colour has a meaning: `given` on a light background, whatever its contrast; ReadableOn on
/// a dark one.
Rgb ShownOn(Rgb given, Rgb background);

}  // namespace quillmoor
