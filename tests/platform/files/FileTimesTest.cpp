// The times of files.
#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "platform/files/FileTimes.h"
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
  const sys_seconds before1970{seconds(-86400)};
  for (const sys_seconds time :
       {sys_seconds{seconds(1231981200)}, sys_seconds{seconds(4102444800)}, before1970}) {
    ASSERT_TRUE(WriteModifiedTime(file, time));
    const auto times = ReadFileTimes(file);
    ASSERT_TRUE(times);
    EXPECT_EQ(times->modified, time);
    EXPECT_GE(times->accessed, start - seconds(1)) << "of no concern to the writer";
  }
  EXPECT_EQ(testing::contentsOf(file), "kept");
}

TEST(FileTimes, LeaveAloneWhatIsNoFile) {
  const testing::TemporaryFolder folder;
  const sys_seconds time{seconds(1231981200)};
  EXPECT_FALSE(WriteModifiedTime(folder.path().string(), time));
  EXPECT_FALSE(ReadFileTimes(folder.path().string()));
  EXPECT_FALSE(WriteModifiedTime((folder / "none").string(), time));
  EXPECT_FALSE(std::filesystem::exists(folder / "none"));
  EXPECT_FALSE(ReadFileTimes((folder / "none").string()));
}

}  // namespace
}  // namespace quillmoor
