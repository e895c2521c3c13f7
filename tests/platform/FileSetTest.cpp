// The exchange of a set of files: at every moment one of the two sets is whole, and found again.
#include "platform/FileSet.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <system_error>

#include "platform/LocalPath.h"
#include "support/TemporaryFolder.h"

namespace quillmoor {
namespace {

using testing::contentsOf;
using testing::writeFile;
using Files = std::map<std::string, std::string>;  // by name

class FileSetTest : public ::testing::Test {
 protected:
  std::string path(const std::string& name) const { return LocalPathText(folder_ / name); }

  void lay(const Files& files) {
    for (const auto& entry : std::filesystem::directory_iterator(folder_.path()))
      std::filesystem::remove_all(entry.path());
    for (const auto& [name, contents] : files) {
      std::filesystem::create_directories((folder_ / name).parent_path());
      writeFile(folder_ / name, contents);
    }
  }
  Files there() const {
    Files files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder_.path())) {
      const std::string name = LocalPathText(entry.path().lexically_relative(folder_.path()));
      files[name] = entry.is_directory() ? "a folder" : contentsOf(entry.path());
    }
    return files;
  }

  const testing::TemporaryFolder folder_;
  const Files former_ = {{"a.z01", "old 1"}, {"a.z02", "old 2"}, {"a.zip", "old"}};
  const Files new_ = {{"a.z01", "new 1"}, {"a.z02", "new 2"}, {"a.zip", "new"}};
  const Files unfinished_ = {{"1.tmp", "new 1"}, {"2.tmp", "new 2"}, {"3.tmp", "new"}};
  const std::vector<SetFile> set_ = {
      {path("1.tmp"), path("a.z01")}, {path("2.tmp"), path("a.z02")}, {path("3.tmp"), path("a.zip")}};
};

Files both(Files a, const Files& b) {
  a.insert(b.begin(), b.end());
  return a;
}

TEST_F(FileSetTest, ReplacesAFormerSet) {
  lay(both(former_, unfinished_));
  giveSetItsNames(set_);
  EXPECT_EQ(there(), new_);
}

TEST_F(FileSetTest, PutsTheFormerSetBackWhenAFileCannotHaveItsName) {
  for (const char* const missing : {"1.tmp", "2.tmp", "3.tmp"}) {
    lay(both(former_, unfinished_));
    std::filesystem::remove(folder_ / missing);
    EXPECT_THROW(giveSetItsNames(set_), std::system_error) << missing;
    for (const auto& [name, contents] : unfinished_) std::filesystem::remove(folder_ / name);
    EXPECT_EQ(there(), former_) << missing;
  }
}

TEST_F(FileSetTest, LeavesNothingOfASetThatReplacesNoneAndCannotHaveItsNames) {
  lay({{"1.tmp", "new 1"}, {"3.tmp", "new"}});
  EXPECT_THROW(giveSetItsNames(set_), std::system_error);
  EXPECT_EQ(there(), (Files{{"3.tmp", "new"}}));
}

// Windows lets nobody rename a file that a program has open like this; elsewhere nothing stands in the way.
TEST_F(FileSetTest, MixesNoSetsWhileAProgramHasAFileOpen) {
  for (const auto& [name, contents] : former_) {
    lay(both(former_, unfinished_));
    bool replaced = true;
    {
      const std::ifstream held(folder_ / name);
      try {
        giveSetItsNames(set_);
      } catch (const std::system_error& error) {
        EXPECT_NE(std::string(error.what()).find("a.z"), std::string::npos) << error.what();
        replaced = false;
      }
    }
    for (const auto& [temporary, text] : unfinished_) std::filesystem::remove(folder_ / temporary);
    EXPECT_EQ(there(), replaced ? new_ : former_) << name;
  }
}

TEST_F(FileSetTest, EndsWhatAKilledProgramHasLeft) {
  const std::string aside = ".quillmoor-unfinished-a.zip/";
  const struct {
    const char* killed;
    Files left;
    const Files& then;
  } cases[] = {
      {"before the first", former_, former_},
      {"after the main file was moved",
       {{"a.z01", "old 1"}, {"a.z02", "old 2"}, {aside + "a.zip", "old"}},
       former_},
      {"when all were moved",
       {{aside + "a.z01", "old 1"}, {aside + "a.z02", "old 2"}, {aside + "a.zip", "old"}},
       former_},
      {"when some had their names",
       {{"a.z01", "new 1"}, {aside + "a.z01", "old 1"}, {aside + "a.z02", "old 2"}, {aside + "a.zip", "old"}},
       former_},
      {"when all had their names", both(new_, {{aside + "a.z01", "old 1"}, {aside + "a.zip", "old"}}), new_},
      {"while the former was put back",
       {{"a.z01", "old 1"}, {aside + "a.z02", "old 2"}, {aside + "a.zip", "old"}},
       former_},
  };
  for (const auto& c : cases) {
    lay(c.left);
    endKilledExchange(path("a.zip"));
    EXPECT_EQ(there(), c.then) << c.killed;
  }
}

}  // namespace
}  // namespace quillmoor
