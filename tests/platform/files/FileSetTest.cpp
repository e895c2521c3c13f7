// The exchange of a set of files: at every moment one of the two sets is whole, or can be restored.
#include "platform/files/FileSet.h"

#include <gmock/gmock.h>

#include <fstream>
#include <map>
#include <system_error>

#include "platform/files/LocalPath.h"
#include "platform/files/TargetLock.h"
#include "support/TemporaryFolder.h"

namespace quillmoor {
namespace {

using ::testing::AllOf;
using testing::contentsOf;
using ::testing::HasSubstr;
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

TEST_F(FileSetTest, PutsTheFormerSetBackWhenAFileCannotHaveItsName) {
  for (const char* const missing : {"1.tmp", "2.tmp", "3.tmp"}) {
    lay(both(former_, unfinished_));
    std::filesystem::remove(folder_ / missing);
    EXPECT_THROW(renameSetIntoPlace(set_), std::system_error) << missing;
    for (const auto& [name, contents] : unfinished_) std::filesystem::remove(folder_ / name);
    EXPECT_EQ(there(), former_) << missing;
  }
  lay({{"1.tmp", "new 1"}, {"3.tmp", "new"}});
  EXPECT_THROW(renameSetIntoPlace(set_), std::system_error);
  EXPECT_EQ(there(), (Files{{"3.tmp", "new"}})) << "where there was no former set, nothing stays";
}

// Windows lets nobody rename a file that a program has open like this; other systems do not mind.
TEST_F(FileSetTest, MixesNoSetsWhileAProgramHasAFileOpen) {
  for (const auto& [name, contents] : former_) {
    lay(both(former_, unfinished_));
    bool replaced = true;
    try {
      const std::ifstream held(folder_ / name);
      renameSetIntoPlace(set_);
    } catch (const std::system_error&) {
      replaced = false;
      for (const auto& [temporary, text] : unfinished_) std::filesystem::remove(folder_ / temporary);
    }
    EXPECT_EQ(there(), replaced ? new_ : former_) << name;
  }
}

TEST_F(FileSetTest, EndsWhatAKilledProgramLeftBehind) {
  const std::string aside = ".quillmoor-unfinished-a.zip/";
  const struct {
    const char* killed;
    Files left, then;
  } cases[] = {
      {"when some had their names",
       {{"a.z01", "new 1"}, {aside + "a.z01", "old 1"}, {aside + "a.z02", "old 2"}, {aside + "a.zip", "old"}},
       former_},
      {"when all had their names", both(new_, {{aside + "a.z01", "old 1"}, {aside + "a.zip", "old"}}), new_},
      {"when the first of a longer set had its name",
       {{"a.z01", "old 1"},
        {"a.z02", "old 2"},
        {"a.z03", "new 3"},
        {aside + ".quillmoor-unfinished-free-names", "a.z03/a.z04/../b/"},
        {aside + "a.zip", "old"}},
       former_},
      {"when there was no former set",
       {{"a.z01", "new 1"}, {aside + ".quillmoor-unfinished-free-names", "a.z01/a.zip/"}},
       {}},
  };
  for (const auto& c : cases) {
    lay(both(c.left, {{aside + ".quillmoor-lock", ""}}));
    EndKilledExchanges(path(""));
    EXPECT_EQ(there(), c.then) << c.killed;
  }
}

TEST_F(FileSetTest, LeavesTheExchangeOfALivingProcessAlone) {
  const Files left = {{".quillmoor-unfinished-a.zip/a.zip", "old"}};
  lay(left);
  {
    const auto lock = TargetLock::acquire(path(".quillmoor-unfinished-a.zip"));
    EndKilledExchanges(path(""));
    EXPECT_TRUE(std::filesystem::exists(folder_ / ".quillmoor-unfinished-a.zip" / "a.zip"));
  }
  EndKilledExchanges(LocalPathText(folder_.path()));
  EXPECT_EQ(there(), (Files{{"a.zip", "old"}}));
}

TEST_F(FileSetTest, NamesEachFileThatCannotBePutBackAndPutsTheOthersBack) {
  lay({{".quillmoor-unfinished-a.zip/a.z01", "old"},
       {"a.z01/occupied", ""},
       {".quillmoor-unfinished-b.zip/b.z01", "old"},
       {"b.z01/occupied", ""},
       {".quillmoor-unfinished-c.zip/c.zip", "old"}});
  EXPECT_THAT([&] { EndKilledExchanges(path("")); },
              ::testing::ThrowsMessage<std::runtime_error>(AllOf(HasSubstr("a.z01"), HasSubstr("b.z01"))));
  EXPECT_EQ(contentsOf(folder_ / "c.zip"), "old");
  EXPECT_NO_THROW(EndKilledExchanges(path("missing")));
}

}  // namespace
}  // namespace quillmoor
