// Files and sets that are being written: they appear whole, and only what no living process writes is
// removed.
#include "platform/files/AtomicFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <system_error>

#include "platform/files/Files.h"
#include "platform/files/LocalPath.h"
#include "platform/files/ReservedNames.h"
#include "platform/files/WorkFolder.h"
#include "support/TemporaryFolder.h"

namespace quillmoor {
namespace {

using testing::contentsOf;
using testing::filesIn;
using testing::TemporaryFolder;
using testing::writeFile;

TEST(AtomicFile, ReplacesTheTargetOnlyAtCommit) {
  const TemporaryFolder folder;
  writeFile(folder / "a", "old");
  {
    AtomicFile file(LocalPathText(folder / "a"), AtomicFile::Survives::power);
    file.write("new");
    AtomicFile other(LocalPathText(folder / "b"));
    other.write("another writer's");
    EXPECT_EQ(contentsOf(folder / "a"), "old");
    file.commit();
  }
  EXPECT_EQ(contentsOf(folder / "a"), "new");
  EXPECT_EQ(filesIn(folder.path()), 1U) << "nothing of the one that was not committed";
}

TEST(AtomicFile, LeavesAFileOfItsTemporaryNameAlone) {
  const TemporaryFolder folder;
  const std::string last = NewTemporaryName();
  const std::size_t dash = last.rfind('-');
  const std::string next =
      last.substr(0, dash + 1) + std::to_string(std::stoull(last.substr(dash + 1)) + 1) + ".tmp";
  writeFile(folder / next, "another's");
  AtomicFile file(LocalPathText(folder / "a"));
  file.write("new");
  file.commit();
  EXPECT_EQ(contentsOf(folder / "a"), "new");
  EXPECT_EQ(contentsOf(folder / next), "another's");
}

TEST(AtomicFile, NamesTheFileInItsError) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder / "a");
  EXPECT_THAT([&] { AtomicFile(LocalPathText(folder / "a")).commit(); },
              ::testing::ThrowsMessage<std::system_error>(::testing::HasSubstr((folder / "a").string())));
  EXPECT_EQ(filesIn(folder.path()), 1U);
}

TEST(StaleTemporaries, AreRemovedAndThoseOfLivingWritersAreNot) {
  const TemporaryFolder folder;
  const std::string parent = LocalPathText(folder / "");
  const std::string killed = NewTemporaryName();
  for (const std::string& name : {std::string(".quillmoor-unfinished.tmp"), killed, NewTemporaryName()})
    writeFile(folder / name, "half");
  const std::string killedSet = NewTemporaryName();
  std::filesystem::create_directory(folder / killedSet);
  for (const char* const name : {".quillmoor-lock", "1", "2"}) writeFile(folder / killedSet / name, "half");
  // The user's, and an exchange that has to be ended first.
  const std::vector<std::string> kept = {".quillmoor-unfinished-a.zip", "quillmoor-unfinished-1.tmp",
                                         "x.tmp"};
  for (const std::string& name : kept) writeFile(folder / name, "kept");

  AtomicFile file(LocalPathText(folder / "a"));
  file.write("whole");
  auto set = std::make_unique<WorkFolder>(parent);
  writeFile(LocalPath(set->file(1)), "whole");
  RemoveStaleTemporaries(parent);
  file.commit();
  EXPECT_EQ(contentsOf(folder / "a"), "whole");
  std::filesystem::rename(LocalPath(set->file(1)), folder / "b");
  set.reset();
  EXPECT_EQ(filesIn(folder.path()), kept.size() + 2);
  for (const std::string& name : kept) EXPECT_EQ(contentsOf(folder / name), "kept");
  EXPECT_EQ(contentsOf(folder / "b"), "whole");
}

TEST(TargetLock, HoldsAFolderOnceAndKeepsItsTime) {
  const TemporaryFolder folder;
  const std::string path = LocalPathText(folder.path());
  constexpr std::int64_t kTime = 1'231'981'200;
  restoreState(path, {0, kTime, 0, 0}, 0);
  for (int round = 0; round < 2; ++round) {
    const auto lock = TargetLock::acquire(path);
    ASSERT_TRUE(lock);
    EXPECT_TRUE(lock->enforced());
    EXPECT_FALSE(TargetLock::acquire(path));
    EXPECT_EQ(fileState(path).modifiedSeconds, kTime);
  }
  EXPECT_EQ(filesIn(folder.path()), 0U);
  EXPECT_EQ(fileState(path).modifiedSeconds, kTime);

  writeFile(folder / kLockFileName, "of a process that was killed");
  EXPECT_TRUE(TargetLock::acquire(path));
  EXPECT_THROW(TargetLock::acquire(LocalPathText(folder / "missing")), std::system_error);
  std::filesystem::create_directory(folder / kLockFileName);
  EXPECT_THROW(TargetLock::acquire(path), std::system_error);
}

}  // namespace
}  // namespace quillmoor
