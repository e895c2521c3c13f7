#include "platform/WholeFile.h"

#include <gtest/gtest.h>

#include <system_error>

#include "support/TemporaryFolder.h"

namespace quillmoor {
namespace {

using testing::contentsOf;
using testing::TemporaryFolder;
using testing::writeFile;

std::size_t filesIn(const std::filesystem::path& folder) {
  return static_cast<std::size_t>(
      std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator()));
}

TEST(WholeFile, ReplacesTheTargetOnlyAtCommit) {
  const TemporaryFolder folder;
  writeFile(folder / "a", "old");
  {
    WholeFile file(folder / "a", WholeFile::Survives::power);
    file.write("new");
    EXPECT_EQ(contentsOf(folder / "a"), "old");
    file.commit();
  }
  EXPECT_EQ(contentsOf(folder / "a"), "new");
  EXPECT_EQ(filesIn(folder.path()), 1U);
}

TEST(WholeFile, LeavesNothingBehindWhenGivenUp) {
  const TemporaryFolder folder;
  {
    WholeFile file(folder / "a");
    file.write("half");
  }
  EXPECT_EQ(filesIn(folder.path()), 0U);
}

TEST(WholeFile, TakesOverTheTemporaryFileOfAKilledRun) {
  const TemporaryFolder folder;
  writeFile(WholeFile::temporaryName(folder.path()), "a long remainder of a run that was killed");
  WholeFile file(folder / "a");
  file.write("x");
  file.commit();
  EXPECT_EQ(contentsOf(folder / "a"), "x");
  EXPECT_EQ(filesIn(folder.path()), 1U);
}

TEST(WholeFile, CanWriteAFileThatIsNamedLikeATemporaryOne) {
  const TemporaryFolder folder;
  const auto target = WholeFile::temporaryName(folder.path());
  writeFile(target, "old");
  WholeFile file(target);
  file.write("new");
  EXPECT_EQ(contentsOf(target), "old");
  file.commit();
  EXPECT_EQ(contentsOf(target), "new");
}

TEST(WholeFile, NamesTheFileInItsError) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder / "a");
  try {
    WholeFile file(folder / "a");
    file.commit();  // a folder stands under the name
    FAIL() << "not raised";
  } catch (const std::system_error& error) {
    EXPECT_NE(std::string(error.what()).find((folder / "a").string()), std::string::npos) << error.what();
  }
  EXPECT_EQ(filesIn(folder.path()), 1U);
}

}  // namespace
}  // namespace quillmoor
