#include "controls/ColourMath.h"

#include <algorithm>
#include <cmath>

namespace quillmoor {
namespace {

constexpr Rgb kWhite{255, 255, 255};
constexpr Rgb kBlack{0, 0, 0};

double linear(std::uint8_t part) {
  const double value = part / 255.0;
  return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

/// Relative luminance, 0 to 1.
double luminance(Rgb colour) {
  return 0.2126 * linear(colour.red) + 0.7152 * linear(colour.green) + 0.0722 * linear(colour.blue);
}

}  // namespace

Rgb Mix(Rgb from, Rgb to, double share) {
  const auto part = [&](std::uint8_t a, std::uint8_t b) {
    return static_cast<std::uint8_t>(std::lround(a + (b - a) * std::clamp(share, 0.0, 1.0)));
  };
  return {part(from.red, to.red), part(from.green, to.green), part(from.blue, to.blue)};
}

double ContrastRatio(Rgb a, Rgb b) {
  const double first = luminance(a) + 0.05;
  const double second = luminance(b) + 0.05;
  return std::max(first, second) / std::min(first, second);
}

Rgb InkOn(Rgb background) {
  return ContrastRatio(kWhite, background) >= ContrastRatio(kBlack, background) ? kWhite : kBlack;
}

Rgb ReadableOn(Rgb text, Rgb background, double ratio) {
  const Rgb ink = InkOn(background);
  constexpr int kSteps = 32;
  for (int step = 0; step < kSteps; ++step) {
    const Rgb shade = Mix(text, ink, static_cast<double>(step) / kSteps);
    if (ContrastRatio(shade, background) >= ratio) return shade;
  }
  return ink;
}

Rgb ShownOn(Rgb given, Rgb background) {
  return InkOn(background) == Rgb{} ? given : ReadableOn(given, background);
}

}  // namespace quillmoor
