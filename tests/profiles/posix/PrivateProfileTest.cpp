// What this platform's own reading and writing of the file adds to the rules: it changes no other line, byte
// by byte.
#include "platform/PrivateProfile.h"

#include <gtest/gtest.h>

#include <random>

#include "support/TemporaryFolder.h"

namespace quillmoor {
namespace {

TEST(PrivateProfile, LeavesOtherLinesAsTheyAre) {
  const testing::TemporaryFolder folder;
  const std::string file = (folder / "x.ini").string();
  std::mt19937 random(4711);
  for (int round = 0; round < 300; ++round) {
    std::string rubbish;
    for (int i = 0; i < 400; ++i) rubbish += "[]=;\r\n\0 \"k\xE4"[random() % 11];
    testing::writeFile(file, rubbish);
    ASSERT_TRUE(WritePrivateProfileString("own section", "own key", "value", file));
    EXPECT_NE(testing::contentsOf(file).find(rubbish.substr(0, 300)), std::string::npos);
  }
}

TEST(PrivateProfile, LosesItsFirstSectionToNoByteOrderMark) {
  const testing::TemporaryFolder folder;
  const std::string file = (folder / "x.ini").string();
  testing::writeFile(file, "\xEF\xBB\xBF[s]\r\nk=v\r\n");
  EXPECT_EQ(GetPrivateProfileSectionNames(file), std::vector<std::string>{"s"});
  EXPECT_TRUE(WritePrivateProfileString("s", "k", "w", file));
  EXPECT_EQ(GetPrivateProfileString("s", "k", file), "w");
}

}  // namespace
}  // namespace quillmoor
