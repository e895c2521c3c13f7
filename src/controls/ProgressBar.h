// The progress bar without its window: properties, geometry and colours.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "controls/ColourMath.h"

namespace quillmoor {

enum class BarOrientation { horizontal = 0, vertical = 1 };  // vertical fills from the bottom
enum class BarScrolling { standard = 0, smooth = 1 };        // standard: in blocks

/// The properties. Changing one adjusts the others so that Min <= Value <= Max.
class ProgressBar {
 public:
  Rgb color{63, 157, 99};
  BarOrientation orientation = BarOrientation::horizontal;
  BarScrolling scrolling = BarScrolling::smooth;
  bool showText = false;  // the percentage, in the middle

  int min() const { return min_; }
  int max() const { return max_; }
  int value() const { return value_; }
  void setMin(int min);
  void setMax(int max);
  void setValue(int value);

  /// The position of `value` between `min` and `max`, 0 to 1; 0 when they are equal.
  double fraction() const;
  /// Whole percent, rounded down, so that 100 means done.
  int percent() const;
  /// "45%"
  std::string text() const;

 private:
  int min_ = 0;
  int max_ = 100;
  int value_ = 0;
};

/// In pixels from the left and the top.
struct BarRect {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  friend bool operator==(const BarRect&, const BarRect&) = default;
};

/// The coloured part of a bar whose inner area is `inside`: one rectangle when smooth, otherwise one for each
/// block. A value above the minimum fills at least one pixel, one below the maximum leaves at least one.
/// `blockLength` and `gap` are in pixels, at least 1 and 0; the last block may be cut.
std::vector<BarRect> FilledParts(const ProgressBar& bar, BarRect inside, int blockLength, int gap);

/// Colours across the bar, evenly spaced from its upper (left) to its lower (right) edge.
std::array<Rgb, 4> BarGradient(Rgb color);

/// The colour of the gradient at `place`, 0 to 1.
Rgb GradientAt(const std::array<Rgb, 4>& stops, double place);

}  // namespace quillmoor
