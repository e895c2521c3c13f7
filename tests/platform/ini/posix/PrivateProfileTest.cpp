// What this platform's own reading and writing of the file adds to the rules: it changes no other line, byte
// by byte.
#include "platform/ini/PrivateProfile.h"

#include <gtest/gtest.h>

#include <random>

#include "support/TemporaryFolder.h"

namespace quillmoor {
namespace {

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
