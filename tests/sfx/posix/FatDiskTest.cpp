// Unpacking onto a disk that has no permissions and belongs to another user: the system calls that set
// permissions and times are replaced here by ones that can be made to fail.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

#include "platform/files/Files.h"
#include "platform/zip/ZipArchiveFixture.h"
#include "sfx/Unpack.h"

namespace {

bool takesModes = true, takesTimes = true;

int refuse() {
  errno = EPERM;
  return -1;
}

}  // namespace

extern "C" int chmod(const char* path, mode_t mode) noexcept {
  return takesModes ? ::fchmodat(AT_FDCWD, path, mode, 0) : refuse();
}
extern "C" int utimensat(int folder, const char* path, const timespec times[2], int flags) noexcept {
  return takesTimes ? static_cast<int>(::syscall(SYS_utimensat, folder, path, times, flags)) : refuse();
}

namespace quillmoor::sfx {
namespace {

using quillmoor::testing::contentsOf;
using quillmoor::testing::writeFile;
using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::SizeIs;

using FatDiskTest = quillmoor::testing::ZipArchiveTest;

TEST_F(FatDiskTest, KeepsAFileWhoseTimeOrPermissionsTheDiskDoesNotTake) {
  const auto time = std::chrono::sys_seconds(std::chrono::seconds(1'300'000'002));
  const std::filesystem::path target = folder_ / "target";
  put("sub/a", "whole");
  ASSERT_TRUE(setModifiedTime(LocalPathText(tree() / "sub/a"), time));
  writeFile(folder_ / "stub", "a stub");
  add();
  archive.writeSelfExtracting(out("a.exe"), LocalPathText(folder_ / "stub"));
  for (const int refusals : {0, 1, 2}) {
    SCOPED_TRACE(refusals);
    std::vector<std::string> notes;
    UnpackEvents events;
    events.note = [&](const std::string& line) { notes.push_back(line); };
    std::filesystem::remove_all(target);
    takesModes = refusals != 1;
    takesTimes = refusals != 2;
    ZipReader reader(out("a.exe"));
    const UnpackResult got = unpack(reader, LocalPathText(target), "", events);
    takesModes = takesTimes = true;
    EXPECT_EQ(got.files, 1U);
    EXPECT_EQ(got.refused, 0U);
    EXPECT_EQ(contentsOf(target / "sub/a"), "whole");
    EXPECT_THAT(notes, SizeIs(refusals == 0 ? 0 : 2)) << "of the file and of its folder";
    EXPECT_THAT(notes, Each(HasSubstr("sub")));
    EXPECT_EQ(fileTimes(LocalPathText(target / "sub/a"))->modified == time, refusals != 2);
  }
}

}  // namespace
}  // namespace quillmoor::sfx
