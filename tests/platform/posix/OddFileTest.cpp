// What else may stand where a file is expected: a pipe, a link, one that is being changed.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <system_error>

#include "TestPlatform.h"
#include "platform/CopyFile.h"
#include "platform/FileTimes.h"
#include "platform/WholeFile.h"
#include "support/TemporaryFolder.h"

namespace quillmoor {
namespace {

using testing::contentsOf;
using testing::TemporaryFolder;
using testing::writeFile;

TEST(FileTimes, LeaveAPipeAloneWithoutWaitingForAReader) {
  const testing::TemporaryFolder folder;
  const std::string pipe = (folder / "pipe").string();
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_FALSE(WriteModifiedTime(pipe, std::chrono::sys_seconds{}));
}

TEST(WholeFile, DoesNotWriteThroughALinkUnderTheTemporaryName) {
  const TemporaryFolder folder;
  writeFile(folder / "victim", "untouched");
  std::filesystem::create_symlink(folder / "victim", WholeFile::temporaryName(folder.path()));
  EXPECT_THROW(WholeFile(folder / "a"), std::system_error);
  EXPECT_EQ(contentsOf(folder / "victim"), "untouched");
}

TEST(CopyWholeFiles, RefusesAFileThatChangesMeanwhile) {
  const TemporaryFolder folder;
  writeFile(folder / "a", "");
  std::filesystem::resize_file(folder / "a", testing::kLongToCopy);
  const auto shorten = [&] {
    std::filesystem::resize_file(folder / "a", 1);
    return true;
  };
  EXPECT_THROW(CopyWholeFiles({{(folder / "a").string(), (folder / "b").string()}}, shorten),
               std::system_error);
  EXPECT_FALSE(std::filesystem::exists(folder / "b"));
}

}  // namespace
}  // namespace quillmoor
