// Copying files: what the copy keeps, and that nothing half done is ever in its place.
#include "platform/files/CopyFile.h"

#include <gtest/gtest.h>

#include <system_error>

#include "TestPlatform.h"
#include "support/TemporaryFolder.h"

namespace quillmoor {
namespace {

using testing::contentsOf;
using testing::filesIn;
using testing::writeFile;
namespace fs = std::filesystem;

class CopyFileTest : public ::testing::Test {
 protected:
  CopyFileTest() {
    fs::create_directory(folder_ / "from");
    fs::create_directory(folder_ / "to");
  }

  static void copy(const fs::path& from, const fs::path& to, const std::function<bool()>& goOn = {}) {
    CopyWholeFiles({{from.string(), to.string()}}, goOn);
  }

  testing::TemporaryFolder folder_;
  const fs::path from_ = folder_ / "from" / "a.zip";
  const fs::path to_ = folder_ / "to" / "a.zip";
};

TEST_F(CopyFileTest, KeepsContentTimeAndPermissionsAndReplacesTheFormerCopy) {
  const auto time = fs::file_time_type::clock::now() - std::chrono::hours(1000);
  for (const std::size_t size : {std::size_t{0}, std::size_t{1}, (std::size_t{9} << 20) + 1}) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i * 7 / 3);
    fs::remove(from_);
    writeFile(from_, bytes);
    fs::permissions(from_, fs::perms::owner_all);
    fs::last_write_time(from_, time);
    writeFile(to_, "an older and longer one");
    writeFile(folder_ / "to" / ".quillmoor-unfinished-1.tmp", "left by a program that was killed");
    copy(from_, to_);
    EXPECT_TRUE(contentsOf(to_) == bytes) << size;
    EXPECT_EQ(fs::last_write_time(to_), fs::last_write_time(from_));
    EXPECT_EQ(fs::status(to_).permissions(), fs::status(from_).permissions());
    EXPECT_EQ(filesIn(folder_ / "to"), 1U);
  }
}

TEST_F(CopyFileTest, LeavesTheFormerCopyWhenItFails) {
  writeFile(from_, "new");
  writeFile(to_, "old");
  fs::create_directory(folder_ / "to" / "b.zip");
  const struct {
    const char* what;
    fs::path from, to;
  } cases[] = {{"a folder as the source", folder_ / "from", to_},
               {"no source", folder_ / "from" / "no a.zip", to_},
               {"onto itself", to_, to_},
               {"no folder for the copy", from_, folder_ / "nowhere" / "a.zip"},
               {"no name for the copy", from_, (folder_ / "to").string() + "/"},
               {"a folder in its place", from_, folder_ / "to" / "b.zip"}};
  for (const auto& c : cases) {
    EXPECT_THROW(copy(c.from, c.to), std::system_error) << c.what;
    EXPECT_EQ(contentsOf(to_), "old") << c.what;
    EXPECT_EQ(filesIn(folder_ / "to"), 2U) << c.what;
  }
  EXPECT_FALSE(fs::exists(folder_ / "nowhere"));
}

TEST_F(CopyFileTest, CopiesASetWholeOrNotAtAll) {
  std::vector<FileCopy> set;
  for (const char* name : {"a.z01", "a.zip", "a.z02"}) {
    writeFile(folder_ / "from" / name, std::string("new ") + name);
    writeFile(folder_ / "to" / name, "old");
    set.push_back({(folder_ / "from" / name).string(), (folder_ / "to" / name).string()});
  }
  CopyWholeFiles(set, {});
  writeFile(from_, "newer");
  fs::remove(folder_ / "from" / "a.z02");
  EXPECT_THROW(CopyWholeFiles(set, {}), std::system_error);
  for (const std::string name : {"a.z01", "a.z02", "a.zip"})
    EXPECT_EQ(contentsOf(folder_ / "to" / name), "new " + name);
  EXPECT_EQ(filesIn(folder_ / "to"), 3U);
}

TEST_F(CopyFileTest, EndsWhenAskedToAndLeavesNothing) {
  writeFile(from_, "");
  fs::resize_file(from_, testing::kLongToCopy);
  EXPECT_THROW(copy(from_, to_, [] { return false; }), std::system_error);
  EXPECT_EQ(filesIn(folder_ / "to"), 0U);
}

}  // namespace
}  // namespace quillmoor
