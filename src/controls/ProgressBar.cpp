#include "controls/ProgressBar.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace quillmoor {

void ProgressBar::setMin(int min) {
  min_ = min;
  max_ = std::max(max_, min);
  value_ = std::max(value_, min);
}

void ProgressBar::setMax(int max) {
  max_ = max;
  min_ = std::min(min_, max);
  value_ = std::min(value_, max);
}

void ProgressBar::setValue(int value) {
  value_ = std::clamp(value, min_, max_);
}

double ProgressBar::fraction() const {
  if (max_ == min_) return 0;
  const double low = min_;
  return (value_ - low) / (max_ - low);
}

int ProgressBar::percent() const {
  if (max_ == min_) return 0;
  return static_cast<int>((std::int64_t{value_} - min_) * 100 / (std::int64_t{max_} - min_));
}

std::string ProgressBar::text() const {
  return std::to_string(percent()) + "%";
}

std::vector<BarRect> FilledParts(const ProgressBar& bar, BarRect inside, int blockLength, int gap) {
  const bool vertical = bar.orientation == BarOrientation::vertical;
  const int whole = vertical ? inside.height : inside.width;
  if (whole <= 0 || bar.value() == bar.min()) return {};
  int length = static_cast<int>(std::lround(bar.fraction() * whole));
  length = bar.value() == bar.max() ? whole : std::clamp(length, 1, std::max(whole - 1, 1));

  const auto part = [&](int from, int to) -> BarRect {
    if (vertical) return {inside.x, inside.y + inside.height - to, inside.width, to - from};
    return {inside.x + from, inside.y, to - from, inside.height};
  };
  if (bar.scrolling == BarScrolling::smooth) return {part(0, length)};
  std::vector<BarRect> blocks;
  blockLength = std::max(blockLength, 1);
  for (int from = 0; from < length; from += blockLength + std::max(gap, 0))
    blocks.push_back(part(from, std::min(from + blockLength, length)));
  return blocks;
}

std::array<Rgb, 4> BarGradient(Rgb color) {
  constexpr Rgb kLight{255, 255, 255};
  constexpr Rgb kDark{0, 0, 0};
  return {Mix(color, kLight, 0.15), Mix(color, kLight, 0.35), color, Mix(color, kDark, 0.18)};
}

Rgb GradientAt(const std::array<Rgb, 4>& stops, double place) {
  const double along = std::clamp(place, 0.0, 1.0) * static_cast<double>(stops.size() - 1);
  const auto before = std::min(static_cast<std::size_t>(along), stops.size() - 2);
  return Mix(stops[before], stops[before + 1], along - static_cast<double>(before));
}

}  // namespace quillmoor
