// What the progress bar shows: its properties, and where and in which colours it is drawn.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "controls/ColourMath.h"

namespace quillmoor {

enum class BarOrientation { horizontal = 0, vertical = 1 };  // vertical fills from the bottom
enum class BarScrolling { standard = 0, smooth = 1 };        // standard: in blocks

/// The properties. A change of one keeps Min <= Value <= Max by moving the others.
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

  /// How far `value` is from `min` to `max`, 0 to 1; 0 when they are the same.
  double fraction() const;
  /// Whole percent, rounded down: 100 means done.
  int percent() const;
  /// "45%"
  std::string text() const;

 private:
  int min_ = 0;
  int max_ = 100;
  int value_ = 0;
};

/// Pixels, from the left and the top.
struct BarRect {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  friend bool operator==(const BarRect&, const BarRect&) = default;
};

/// The coloured part of a bar whose inside has that place: one rectangle when it is smooth, else a block
/// each. A value above the minimum shows at least one pixel, one below the maximum leaves at least one.
/// `blockLength` and `gap` are pixels, 1 and 0 at the least; the last block may be cut.
std::vector<BarRect> FilledParts(const ProgressBar& bar, BarRect inside, int blockLength, int gap);

/// Colours across the bar, at even distances from its upper (left) to its lower (right) edge.
std::array<Rgb, 4> BarGradient(Rgb color);

/// Colour of the gradient at a place from 0 to 1.
Rgb GradientAt(const std::array<Rgb, 4>& stops, double place);

}  // namespace quillmoor
