// Unpacking onto a disk that has no permissions and belongs to another user: here the system's calls that set
// permissions and times are replaced by ones that refuse when they are told to.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

#include "platform/files/FileTimes.h"
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
using ::testing::IsEmpty;
using ::testing::SizeIs;

struct FatDiskTest : quillmoor::testing::ZipArchiveTest {
  ~FatDiskTest() override { takesModes = takesTimes = true; }
};

TEST_F(FatDiskTest, KeepsAFileWhoseTimeOrPermissionsTheDiskDoesNotTake) {
  const auto time = std::chrono::sys_seconds(std::chrono::seconds(1'300'000'002));
  put("sub/a", "whole");
  ASSERT_TRUE(WriteModifiedTime(LocalPathText(tree() / "sub/a"), time));
  writeFile(folder_ / "stub", "a stub");
  add();
  archive.writeSelfExtracting(out("a.exe"), LocalPathText(folder_ / "stub"));
  for (const int refusals : {0, 1, 2, 3}) {
    const bool modes = (refusals & 1) == 0, times = (refusals & 2) == 0;
    SCOPED_TRACE(refusals);
    std::vector<std::string> refused, notes;
    UnpackEvents events;
    events.refused = [&](const std::string& line) { refused.push_back(line); };
    events.note = [&](const std::string& line) { notes.push_back(line); };
    const std::filesystem::path target = folder_ / "target";
    std::filesystem::remove_all(target);
    takesModes = modes;
    takesTimes = times;
    ZipReader reader(out("a.exe"));
    const UnpackResult got = unpack(reader, LocalPathText(target), "", events);
    takesModes = takesTimes = true;
    EXPECT_EQ(got.files, 1U);
    EXPECT_EQ(got.refused, 0U);
    EXPECT_THAT(refused, IsEmpty());
    EXPECT_EQ(contentsOf(target / "sub/a"), "whole");
    EXPECT_THAT(notes, SizeIs(modes && times ? 0 : 2)) << "of the file and of its folder";
    EXPECT_THAT(notes, Each(HasSubstr("sub")));
    EXPECT_EQ(ReadFileTimes(LocalPathText(target / "sub/a"))->modified == time, times);
  }
}

}  // namespace
}  // namespace quillmoor::sfx
