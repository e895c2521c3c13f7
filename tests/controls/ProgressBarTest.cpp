#include "controls/ProgressBar.h"

#include <gtest/gtest.h>

#include <climits>

namespace quillmoor {
namespace {

TEST(ProgressBar, KeepsTheValueBetweenItsEnds) {
  ProgressBar bar;
  bar.setValue(150);
  EXPECT_EQ(bar.value(), 100);
  bar.setValue(-5);
  EXPECT_EQ(bar.value(), 0);
  bar.setMin(20);
  EXPECT_EQ(bar.value(), 20);
  bar.setMin(200);
  EXPECT_EQ(bar.max(), 200);
  bar.setMax(10);
  EXPECT_EQ(bar.min(), 10);
  EXPECT_EQ(bar.value(), 10);
}

TEST(ProgressBar, SaysHundredPercentOnlyWhenDone) {
  struct Case {
    int min, max, value;
    const char* text;
  };
  for (const Case& c : {Case{0, 100, 0, "0%"}, Case{0, 1000, 999, "99%"}, Case{0, 1000, 1000, "100%"},
                        Case{-50, 50, 0, "50%"}, Case{5, 5, 5, "0%"}, Case{INT_MIN, INT_MAX, INT_MAX, "100%"},
                        Case{INT_MIN, INT_MAX, 0, "50%"}}) {
    ProgressBar bar;
    bar.setMin(c.min);
    bar.setMax(c.max);
    bar.setValue(c.value);
    EXPECT_EQ(bar.text(), c.text) << c.min << " " << c.value << " " << c.max;
  }
}

TEST(ProgressBar, FillsFromTheLeftOrTheBottom) {
  using Rects = std::vector<BarRect>;
  const struct {
    int max, value;
    bool vertical, blocks;
    BarRect area;
    Rects filled;
  } cases[] = {
      {100, 25, false, false, {10, 20, 200, 16}, {{10, 20, 50, 16}}},
      {100, 25, true, false, {10, 20, 16, 200}, {{10, 170, 16, 50}}},
      // The first step is seen, and so is that the last is missing.
      {100'000, 0, false, false, {0, 0, 200, 16}, {}},
      {100'000, 1, false, false, {0, 0, 200, 16}, {{0, 0, 1, 16}}},
      {100'000, 99'999, false, false, {0, 0, 200, 16}, {{0, 0, 199, 16}}},
      {100'000, 100'000, false, false, {0, 0, 200, 16}, {{0, 0, 200, 16}}},
      {100'000, 100'000, false, false, {0, 0, 0, 16}, {}},
      {100'000, 100'000, false, false, {0, 0, -4, 16}, {}},
      {100, 25, false, true, {0, 0, 100, 16}, {{0, 0, 8, 16}, {10, 0, 8, 16}, {20, 0, 5, 16}}},  // the last
                                                                                                 // is cut
  };
  ProgressBar bar;
  for (const auto& c : cases) {
    bar.setMax(c.max);
    bar.setValue(c.value);
    bar.orientation = c.vertical ? BarOrientation::vertical : BarOrientation::horizontal;
    bar.scrolling = c.blocks ? BarScrolling::standard : BarScrolling::smooth;
    EXPECT_EQ(FilledParts(bar, c.area, 8, 2), c.filled) << c.value << " of " << c.max;
  }
  EXPECT_EQ(FilledParts(bar, {0, 0, 100, 16}, 0, -1).size(), 25U) << "a length of nothing would never end";
}

TEST(ProgressBar, BlendsItsColours) {
  const std::array<Rgb, 4> stops{{{0, 0, 0}, {30, 60, 90}, {60, 120, 180}, {90, 180, 255}}};
  EXPECT_EQ(GradientAt(stops, -1), stops[0]);
  EXPECT_EQ(GradientAt(stops, 0.5), (Rgb{45, 90, 135}));
  EXPECT_EQ(GradientAt(stops, 2), stops[3]);
  EXPECT_EQ(BarGradient({63, 157, 99})[2], (Rgb{63, 157, 99}));
}

TEST(ColourMath, MeasuresContrastAsTheGuidelinesDo) {
  EXPECT_DOUBLE_EQ(ContrastRatio({0, 0, 0}, {255, 255, 255}), 21);
  EXPECT_DOUBLE_EQ(ContrastRatio({9, 99, 199}, {9, 99, 199}), 1);
  EXPECT_NEAR(ContrastRatio({0x77, 0x77, 0x77}, {255, 255, 255}), 4.48, 0.01);
}

TEST(ColourMath, ChangesOnlyColoursThatCannotBeRead) {
  constexpr Rgb kWhite{255, 255, 255};
  constexpr Rgb kDark{43, 43, 43};
  EXPECT_EQ(ReadableOn({0, 0, 255}, kWhite), (Rgb{0, 0, 255}));
  for (const Rgb text : {Rgb{0, 0, 255}, Rgb{153, 0, 153}, Rgb{0, 102, 0}, Rgb{43, 43, 43}, Rgb{0, 255, 0}}) {
    EXPECT_GE(ContrastRatio(ReadableOn(text, kDark), kDark), 4.5);
    EXPECT_GE(ContrastRatio(ReadableOn(text, kWhite), kWhite), 4.5);
  }
  const Rgb blue = ReadableOn({0, 0, 255}, kDark);
  EXPECT_GT(blue.blue, blue.red) << "still a blue";
  EXPECT_EQ(ReadableOn({1, 2, 3}, {119, 119, 119}, 21), InkOn({119, 119, 119})) << "as good as can be had";
}

}  // namespace
}  // namespace quillmoor
