// Sums with colours that every control needs and no window is needed for.
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

/// How well one is read on the other: 1 (not at all) to 21 (Web Content Accessibility Guidelines 2.1,
/// "contrast ratio").
double ContrastRatio(Rgb a, Rgb b);

/// White or black, whichever is read better there.
Rgb InkOn(Rgb background);

/// `text` itself where it is read well enough on the background, otherwise the nearest shade of it, towards
/// white or black, that is. Keeps coloured texts readable in light and dark themes. A ratio of 4.5 is what
/// the guidelines ask for.
Rgb ReadableOn(Rgb text, Rgb background, double ratio = 4.5);

/// For texts whose colours say something: as it is given on a light background, whatever its contrast, and
/// as `ReadableOn` has it on a dark one.
Rgb ShownOn(Rgb given, Rgb background);

}  // namespace quillmoor
