// Where the window's place and its check box are kept.
#include <gtest/gtest.h>

#include "TestPlatform.h"
#include "browser/BrowserPlacement.h"
#include "profiles/SettingsStore.h"

namespace quillmoor {
namespace {

TEST(BrowserPlacement, ComesBackAsItWasStored) {
  const testing::OwnRegistry registry;
  EXPECT_FALSE(LoadBrowserPlacement().window);
  EXPECT_FALSE(LoadBrowserPlacement().foldersOnly);

  SaveBrowserPlacement({BrowserPlacement::Rectangle{-1200, 15, 9000.4, 6000}, true});
  const BrowserPlacement stored = LoadBrowserPlacement();
  EXPECT_EQ(stored.window, (BrowserPlacement::Rectangle{-1200, 15, 9000, 6000}));
  EXPECT_TRUE(stored.foldersOnly);
  EXPECT_EQ(ReadSetting("FtpBrowseLeft", ""), "-1200");
  EXPECT_EQ(ReadSetting("FtpBrowseFoldersOnly", ""), "1");

  SaveBrowserPlacement({std::nullopt, false});
  EXPECT_EQ(LoadBrowserPlacement().window, stored.window) << "a window without a place leaves the stored one";
  EXPECT_FALSE(LoadBrowserPlacement().foldersOnly);
}

TEST(BrowserPlacement, TakesWhatIsNoPlaceForMissing) {
  const testing::OwnRegistry registry;
  const char* const keys[] = {"FtpBrowseLeft", "FtpBrowseTop", "FtpBrowseWidth", "FtpBrowseHeight"};
  const char* bad[][4] = {{"1", "2", "3", ""},
                          {"1", "2", "0", "4"},
                          {"1", "2", "3", "-4"},
                          {"1e9", "2", "3", "4"},
                          {"1", "2", "wide", "4"}};
  for (const auto& values : bad) {
    for (std::size_t i = 0; i < std::size(keys); ++i) WriteSetting(keys[i], values[i]);
    EXPECT_FALSE(LoadBrowserPlacement().window) << values[0] << ' ' << values[2] << ' ' << values[3];
  }
  WriteSetting("FtpBrowseFoldersOnly", "2");
  EXPECT_FALSE(LoadBrowserPlacement().foldersOnly) << "only 1 is on";
}

}  // namespace
}  // namespace quillmoor
