#include "shell/WindowPlacement.h"

#include <gtest/gtest.h>

#include <cmath>
#include <ostream>

namespace quillmoor {

void PrintTo(const PixelRect& r, std::ostream* out) {
  *out << r.left << "," << r.top << " " << r.width << "x" << r.height;
}

namespace {

TEST(WindowPlacement, ComesBackToThePixelFromWhatWasStoredInTwips) {
  EXPECT_EQ(StoredPlacement({}, 144), (PixelRect{100, 100, 1169, 809})) << "1440 twips to the inch";
  for (const double resolution : {96.0, 120.0, 144.0, 168.0, 192.0}) {
    for (int n = -300; n < 3000; n += 7) {
      const PixelRect window{n, n + 1, n + 500, n + 501};
      ApplicationSettings settings;
      NotePlacement(settings, window, resolution);
      ASSERT_EQ(StoredPlacement(settings, resolution), window) << resolution;
    }
  }
}

TEST(WindowPlacement, ReplacesNonsenseByTheDefault) {
  const PixelRect standard = StoredPlacement({}, 96);
  for (const double nonsense : {std::nan(""), 1e300, -1e300}) {
    ApplicationSettings settings;
    settings.MainLeft = settings.MainTop = nonsense;
    settings.MainWidth = settings.MainHeight = nonsense > 0 ? nonsense : 1499;
    EXPECT_EQ(StoredPlacement(settings, 96), standard) << nonsense;
  }
}

TEST(WindowPlacement, MovesOnlyWhatCannotBeReachedOnAnyScreen) {
  const std::vector<PixelRect> two = {{0, 0, 1920, 1040}, {1920, 0, 1280, 1024}};
  const std::vector<PixelRect> one = {{0, 24, 1920, 1056}};
  const struct {
    const char* what;
    PixelRect window;
    std::vector<PixelRect> screens;
    PixelRect shown;
  } cases[] = {
      {"half out to the right", {1800, 100, 800, 600}, one, {1800, 100, 800, 600}},
      {"too little of it to be grabbed", {-770, 100, 800, 600}, one, {0, 100, 800, 600}},
      {"on the second screen", {2000, 100, 800, 600}, two, {2000, 100, 800, 600}},
      {"its second screen is gone", {2000, 100, 800, 600}, one, {1120, 100, 800, 600}},
      {"its title bar is above", {100, -20, 800, 600}, one, {100, 24, 800, 600}},
      {"larger than what is left", {5000, 5000, 3000, 2000}, one, {0, 24, 1920, 1056}},
      {"no screen at all", {100, 100, 800, 600}, {}, {100, 100, 800, 600}},
  };
  for (const auto& one_ : cases)
    EXPECT_EQ(BroughtOntoScreen(one_.window, one_.screens), one_.shown) << one_.what;
}

TEST(WindowPlacement, FitsTheFirstWindowIntoASmallScreen) {
  const std::vector<PixelRect> small = {{0, 0, 800, 570}};
  EXPECT_EQ(WhollyOnScreen({67, 67, 779, 539}, small), (PixelRect{21, 31, 779, 539}));
  EXPECT_EQ(WhollyOnScreen({133, 133, 1558, 1078}, small), small.front());
  EXPECT_EQ(WhollyOnScreen({67, 67, 779, 539}, {{0, 0, 1920, 1040}}), (PixelRect{67, 67, 779, 539}));
}

}  // namespace
}  // namespace quillmoor
