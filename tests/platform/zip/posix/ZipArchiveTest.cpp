// What only files of this system can be: links, pipes, names in no encoding, modes; and a disk that is full.
#include "platform/zip/ZipArchive.h"

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "../ZipArchiveFixture.h"

namespace quillmoor {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using testing::InspectedArchive;
using ::testing::UnorderedElementsAre;
using testing::ZipArchiveTest;

TEST_F(ZipArchiveTest, FollowsNoLinkButTheFolderItself) {
  put("a", "x");
  testing::writeFile(folder_ / "secret", "not to be packed");
  std::filesystem::create_directory(folder_ / "elsewhere");
  testing::writeFile(folder_ / "elsewhere" / "secret", "not to be packed");
  std::filesystem::create_symlink(folder_ / "secret", tree() / "link");
  std::filesystem::create_symlink("nothing", tree() / "broken");
  std::filesystem::create_directory_symlink(folder_ / "elsewhere", tree() / "folder");
  ASSERT_EQ(::mkfifo((tree() / "pipe").c_str(), 0600), 0);
  std::filesystem::create_directory_symlink(tree(), folder_ / "root");
  archive.addFiles((folder_ / "root/*").string(), true);
  EXPECT_THAT(testing::inspectArchive(archive.write(out("a.zip")).paths).names(), ElementsAre("a"));
  EXPECT_THAT(errors, UnorderedElementsAre(HasSubstr("root/link"), HasSubstr("root/broken"),
                                           HasSubstr("root/folder"), HasSubstr("root/pipe")));
}

TEST_F(ZipArchiveTest, KeepsModesAndTheBytesOfNamesAndMakesProgramsExecutable) {
  put("caf\xE9", "x");
  put("back\\slash", "y");
  ASSERT_EQ(::chmod((tree() / "caf\xE9").c_str(), 0755), 0);
  ASSERT_EQ(::chmod((tree() / "back\\slash").c_str(), 0400), 0);
  const InspectedArchive got = packed();
  EXPECT_EQ(got["caf\xE9"].flags, 0U) << "of its encoding nothing is said";
  EXPECT_EQ(got["caf\xE9"].attributes, 0100755U << 16);
  EXPECT_EQ(got["back\\slash"].attributes, 0100400U << 16 | 1U);
  EXPECT_NE(::access(out("a.zip").c_str(), X_OK), 0);
  testing::writeFile(folder_ / "stub", "stub");
  archive.writeSelfExtracting(out("a.exe"), (folder_ / "stub").string());
  add();
  archive.write(out("with\\slash.zip"));
  EXPECT_THAT(filesOut(), ElementsAre("a.exe", "a.zip", "with\\slash.zip"));
  EXPECT_EQ(::access(out("a.exe").c_str(), X_OK), 0);
}

TEST_F(ZipArchiveTest, LeavesNothingButWhatWasThereWhenTheDiskIsFull) {
  put("noise", noise(2 << 20));
  testing::writeFile(out("a.zip"), "old");
  add();
  // No file may grow beyond a limit, as on a disk that is full.
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit before{};
  ::getrlimit(RLIMIT_FSIZE, &before);
  const rlimit limit{1 << 20, before.rlim_max};
  ::setrlimit(RLIMIT_FSIZE, &limit);
  EXPECT_THROW(archive.write(out("a.zip")), ZipError);
  ::setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_EQ(testing::contentsOf(out("a.zip")), "old");
  EXPECT_THAT(filesOut(), ElementsAre("a.zip"));
  EXPECT_THAT(errors, ElementsAre(HasSubstr("cannot write")));
}

}  // namespace
}  // namespace quillmoor
