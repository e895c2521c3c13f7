#include "shell/WindowPlacement.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace quillmoor {
namespace {

constexpr double kFarthest = 32767 * 15.0;  // twips; X11 and Windows count pixels in 16 bits
constexpr double kSmallest = 100 * 15.0;
constexpr int kGrip = 48;  // pixels of the upper edge needed to drag a window

bool isPlace(double twips) {
  return std::abs(twips) <= kFarthest;  // false for NaN
}

bool isExtent(double twips) {
  return twips >= kSmallest && twips <= kFarthest;
}

int overlap(int a, int aLength, int b, int bLength) {
  return std::min(a + aLength, b + bLength) - std::max(a, b);
}

bool canBeDragged(const PixelRect& window, const PixelRect& screen) {
  return overlap(window.left, window.width, screen.left, screen.width) >= std::min(kGrip, window.width) &&
         overlap(window.top, kGrip, screen.top, screen.height) >= kGrip / 2 && window.top >= screen.top;
}

std::int64_t squaredDistance(const PixelRect& a, const PixelRect& b) {
  const std::int64_t x = (a.left + a.width / 2) - (b.left + b.width / 2);
  const std::int64_t y = (a.top + a.height / 2) - (b.top + b.height / 2);
  return x * x + y * y;
}

}  // namespace

PixelRect StoredPlacement(const ApplicationSettings& settings, double pixelsPerInch) {
  const ApplicationSettings standard;
  const auto pixels = [&](double twips) {
    return static_cast<int>(std::lround(twips * pixelsPerInch / kTwipsPerInch));
  };
  const auto place = [&](double stored, double otherwise) {
    return pixels(isPlace(stored) ? stored : otherwise);
  };
  const auto extent = [&](double stored, double otherwise) {
    return pixels(isExtent(stored) ? stored : otherwise);
  };
  return {place(settings.MainLeft, standard.MainLeft), place(settings.MainTop, standard.MainTop),
          extent(settings.MainWidth, standard.MainWidth), extent(settings.MainHeight, standard.MainHeight)};
}

void NotePlacement(ApplicationSettings& settings, PixelRect window, double pixelsPerInch) {
  const auto twips = [&](int pixels) { return std::round(pixels * kTwipsPerInch / pixelsPerInch); };
  settings.MainLeft = twips(window.left);
  settings.MainTop = twips(window.top);
  settings.MainWidth = twips(window.width);
  settings.MainHeight = twips(window.height);
}

PixelRect WhollyOnScreen(PixelRect window, const std::vector<PixelRect>& screens) {
  const auto nearest = std::min_element(screens.begin(), screens.end(), [&](const auto& a, const auto& b) {
    return squaredDistance(window, a) < squaredDistance(window, b);
  });
  if (nearest == screens.end()) return window;
  window.width = std::min(window.width, nearest->width);
  window.height = std::min(window.height, nearest->height);
  window.left = std::clamp(window.left, nearest->left, nearest->left + nearest->width - window.width);
  window.top = std::clamp(window.top, nearest->top, nearest->top + nearest->height - window.height);
  return window;
}

PixelRect BroughtOntoScreen(PixelRect window, const std::vector<PixelRect>& screens) {
  const bool seen = std::any_of(screens.begin(), screens.end(),
                                [&](const PixelRect& screen) { return canBeDragged(window, screen); });
  return seen ? window : WhollyOnScreen(window, screens);
}

}  // namespace quillmoor
