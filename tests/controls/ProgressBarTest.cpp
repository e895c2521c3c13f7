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
  bar.setMin(200);
  EXPECT_EQ(bar.value() + bar.max(), 400);
  bar.setMax(10);
  EXPECT_EQ(bar.value() + bar.min(), 20);
}

TEST(ProgressBar, FillsFromTheLeftOrTheBottomAndSaysHowMuch) {
  const struct {
    int min, max, value;
    bool vertical;
    BarRect filled;  // of 10,20 200x16, or 10,20 16x200
    const char* text;
  } cases[] = {
      {0, 100, 25, false, {10, 20, 50, 16}, "25%"},
      {0, 100, 25, true, {10, 170, 16, 50}, "25%"},
      {INT_MIN, INT_MAX, 0, false, {10, 20, 100, 16}, "50%"},
      // The first step shows, and so does that the last is missing.
      {0, 100'000, 1, false, {10, 20, 1, 16}, "0%"},
      {0, 100'000, 99'999, false, {10, 20, 199, 16}, "99%"},
      {0, 100'000, 100'000, false, {10, 20, 200, 16}, "100%"},
  };
  ProgressBar bar;
  for (const auto& c : cases) {
    bar.setMin(c.min);
    bar.setMax(c.max);
    bar.setValue(c.value);
    bar.orientation = c.vertical ? BarOrientation::vertical : BarOrientation::horizontal;
    const BarRect area = c.vertical ? BarRect{10, 20, 16, 200} : BarRect{10, 20, 200, 16};
    EXPECT_EQ(FilledParts(bar, area, 8, 2), std::vector{c.filled}) << c.value << " of " << c.max;
    EXPECT_EQ(bar.text(), c.text) << c.value << " of " << c.max;
  }
  EXPECT_TRUE(FilledParts(bar, {0, 0, -4, 16}, 8, 2).empty()) << "no room";
  bar.setMax(0);
  EXPECT_EQ(bar.text(), "0%") << "nothing to do";
  EXPECT_TRUE(FilledParts(bar, {0, 0, 200, 16}, 8, 2).empty());
  bar.setMax(100);
  bar.setValue(25);
  bar.scrolling = BarScrolling::standard;
  const std::vector<BarRect> blocks = {{0, 0, 8, 16}, {10, 0, 8, 16}, {20, 0, 5, 16}};  // the last is cut
  EXPECT_EQ(FilledParts(bar, {0, 0, 100, 16}, 8, 2), blocks);
}

TEST(ColourMath, ChangesOnlyColoursThatCannotBeRead) {
  constexpr Rgb kWhite{255, 255, 255}, kDark{43, 43, 43}, kBlue{0, 0, 255};
  EXPECT_DOUBLE_EQ(ContrastRatio({0, 0, 0}, kWhite), 21);
  EXPECT_NEAR(ContrastRatio({0x77, 0x77, 0x77}, kWhite), 4.48, 0.01) << "as WCAG defines it";
  EXPECT_EQ(ReadableOn(kBlue, kWhite), kBlue);
  for (const Rgb text : {kBlue, Rgb{153, 0, 153}, Rgb{0, 102, 0}, kDark, Rgb{0, 255, 0}}) {
    EXPECT_GE(ContrastRatio(ReadableOn(text, kDark), kDark), 4.5);
    EXPECT_GE(ContrastRatio(ReadableOn(text, kWhite), kWhite), 4.5);
  }
  const Rgb blue = ReadableOn(kBlue, kDark);
  EXPECT_GT(blue.blue, blue.red) << "still a blue";
  EXPECT_EQ(ReadableOn({1, 2, 3}, {119, 119, 119}, 21), InkOn({119, 119, 119}))
      << "no colour has that contrast";
}

}  // namespace
}  // namespace quillmoor
