// Copying a file: what the copy keeps, and that nothing half done ever stands in its place.
#include "platform/files/CopyFile.h"

#include <gmock/gmock.h>
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

  /// The error of the copy, 0 when it is made.
  int copy(const fs::path& from, const fs::path& to, const std::function<bool()>& goOn = {}) {
    try {
      CopyWholeFiles({{from.string(), to.string()}}, goOn);
      return 0;
    } catch (const std::system_error& error) {
      EXPECT_THAT(error.what(),
                  ::testing::AnyOf(::testing::HasSubstr("a.zip"), ::testing::HasSubstr("quillmoor")));
      return error.code().value();
    }
  }

  testing::TemporaryFolder folder_;
  const fs::path from_ = folder_ / "from" / "a.zip";
  const fs::path to_ = folder_ / "to" / "a.zip";
};

TEST_F(CopyFileTest, KeepsContentTimeAndPermissionsAndReplacesWhatWasThere) {
  const auto time = fs::file_time_type::clock::now() - std::chrono::hours(1000);
  for (const std::size_t size : {std::size_t{0}, std::size_t{1}, (std::size_t{9} << 20) + 1}) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i * 7 / 3);
    fs::remove(from_);
    writeFile(from_, bytes);
    fs::permissions(from_, fs::perms::owner_all);
    fs::last_write_time(from_, time);
    writeFile(to_, "an older and longer one");
    for (const char* name : {".quillmoor-unfinished-1.tmp", ".quillmoor-unfinished-2.tmp"}) {
      writeFile(folder_ / "to" / name, "left by a program that was killed");
    }
    EXPECT_EQ(copy(from_, to_), 0);
    EXPECT_TRUE(contentsOf(to_) == bytes) << size;
    EXPECT_EQ(fs::last_write_time(to_), fs::last_write_time(from_));
    EXPECT_EQ(fs::status(to_).permissions(), fs::status(from_).permissions());
    EXPECT_EQ(filesIn(folder_ / "to"), 1U);
  }
}

TEST_F(CopyFileTest, LeavesWhatWasThereWhenItFails) {
  writeFile(from_, "new");
  writeFile(to_, "old");
  EXPECT_NE(copy(folder_ / "from", to_), 0) << "a folder is no file";
  EXPECT_NE(copy(folder_ / "from" / "no a.zip", to_), 0);
  EXPECT_EQ(contentsOf(to_), "old");
  EXPECT_NE(copy(to_, to_), 0) << "onto itself";
  EXPECT_EQ(contentsOf(to_), "old");
  EXPECT_NE(copy(from_, folder_ / "nowhere" / "a.zip"), 0);
  EXPECT_FALSE(fs::exists(folder_ / "nowhere"));
  EXPECT_NE(copy(from_, (folder_ / "to").string() + "/"), 0) << "no name for the copy";
  fs::create_directory(folder_ / "to" / "b.zip");
  EXPECT_NE(copy(from_, folder_ / "to" / "b.zip"), 0) << "a folder in its place";
  EXPECT_EQ(filesIn(folder_ / "to"), 2U) << "a temporary file was left";
}

TEST_F(CopyFileTest, CopiesASetWholeOrNotAtAll) {
  for (const char* name : {"a.z01", "a.z02", "a.zip"}) {
    writeFile(folder_ / "from" / name, std::string("new ") + name);
    writeFile(folder_ / "to" / name, "old");
  }
  std::vector<FileCopy> set;
  for (const char* name : {"a.z01", "a.zip", "a.z02"}) {
    set.push_back({(folder_ / "from" / name).string(), (folder_ / "to" / name).string()});
  }
  fs::rename(folder_ / "from" / "a.z02", folder_ / "from" / "away");
  EXPECT_THROW(CopyWholeFiles(set, {}), std::system_error);
  for (const char* name : {"a.z01", "a.z02", "a.zip"}) EXPECT_EQ(contentsOf(folder_ / "to" / name), "old");
  EXPECT_EQ(filesIn(folder_ / "to"), 3U);

  fs::rename(folder_ / "from" / "away", folder_ / "from" / "a.z02");
  CopyWholeFiles(set, {});
  for (const std::string name : {"a.z01", "a.z02", "a.zip"})
    EXPECT_EQ(contentsOf(folder_ / "to" / name), "new " + name);
  EXPECT_EQ(filesIn(folder_ / "to"), 3U);
}

TEST_F(CopyFileTest, EndsWhenToldAndLeavesNothing) {
  writeFile(from_, "");
  fs::resize_file(from_, testing::kLongToCopy);
  EXPECT_EQ(copy(from_, to_, [] { return false; }), static_cast<int>(std::errc::operation_canceled));
  EXPECT_EQ(filesIn(folder_ / "to"), 0U);
}

}  // namespace
}  // namespace quillmoor
