// What else may be where a file is expected: a pipe, one that is being changed; and what a killed process
// leaves behind.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <system_error>

#include "TestPlatform.h"
#include "platform/files/CopyFile.h"
#include "platform/files/Files.h"
#include "platform/files/ReservedNames.h"
#include "platform/files/TargetLock.h"
#include "support/TemporaryFolder.h"

namespace quillmoor {
namespace {

using testing::TemporaryFolder;

TEST(FileTimes, AreNotSetOnAPipeNorWaitForItsReader) {
  const TemporaryFolder folder;
  const std::string pipe = (folder / "pipe").string();
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_FALSE(setModifiedTime(pipe, {}));
}

TEST(TargetLock, IsTakenOverFromAnEndedProcessOfAnotherUser) {
  const TemporaryFolder folder;
  ::chmod(folder.path().c_str(), 01777);
  const auto endHolding = [&](uid_t user) {
    ::umask(0077);
    if (user != 0 && ::geteuid() == 0 && ::setuid(user) != 0) ::_exit(2);
    const auto lock = TargetLock::acquire(folder.path());
    ::_exit(lock ? 0 : 1);
  };
  EXPECT_EXIT(endHolding(0), ::testing::ExitedWithCode(0), "");
  EXPECT_TRUE(std::filesystem::exists(folder / kLockFileName));
  EXPECT_EXIT(endHolding(65534), ::testing::ExitedWithCode(0), "");
}

TEST(CopyWholeFiles, RefusesAFileThatChangesMeanwhile) {
  const TemporaryFolder folder;
  testing::writeFile(folder / "a", "");
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
