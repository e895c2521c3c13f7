// The times of files.
#include "platform/files/Files.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "support/TemporaryFolder.h"

namespace quillmoor {
namespace {

using std::chrono::seconds;
using std::chrono::sys_seconds;

TEST(FileTimes, AreReadAndSetToTheSecond) {
  const testing::TemporaryFolder folder;
  const std::string file = (folder / "f").string();
  const auto start = std::chrono::floor<seconds>(std::chrono::system_clock::now());
  testing::writeFile(file, "kept");
  for (const int time : {1'231'981'200, -86'400}) {
    ASSERT_TRUE(setModifiedTime(file, sys_seconds(seconds(time))));
    const auto times = fileTimes(file);
    ASSERT_TRUE(times);
    EXPECT_EQ(times->modified, sys_seconds(seconds(time)));
    EXPECT_GE(times->accessed, start - seconds(1)) << "not changed";
  }
  EXPECT_EQ(testing::contentsOf(file), "kept");
  for (const std::string& noFile : {folder.path().string(), (folder / "none").string()}) {
    EXPECT_FALSE(setModifiedTime(noFile, {}));
    EXPECT_FALSE(fileTimes(noFile));
  }
  EXPECT_FALSE(std::filesystem::exists(folder / "none"));
}

}  // namespace
}  // namespace quillmoor
