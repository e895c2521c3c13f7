// What else may stand where a file is expected: a pipe, one that is being changed; and what a killed process
// leaves.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <system_error>
#include <utility>

#include "TestPlatform.h"
#include "platform/files/CopyFile.h"
#include "platform/files/FileTimes.h"
#include "platform/files/ReservedNames.h"
#include "platform/files/TargetLock.h"
#include "support/TemporaryFolder.h"

namespace quillmoor {
namespace {

using testing::contentsOf;
using testing::TemporaryFolder;
using testing::writeFile;

TEST(FileTimes, LeaveAPipeAloneWithoutWaitingForAReader) {
  const testing::TemporaryFolder folder;
  const std::string pipe = (folder / "pipe").string();
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_FALSE(WriteModifiedTime(pipe, std::chrono::sys_seconds{}));
}

/// A process that does something and then waits to be killed.
class KilledProcess {
 public:
  explicit KilledProcess(const std::function<void()>& act) {
    int done[2];
    EXPECT_EQ(::pipe(done), 0);
    child_ = ::fork();
    if (child_ == 0) {
      act();
      if (::write(done[1], "", 1) == 1) ::pause();
      ::_exit(1);
    }
    char byte = 0;
    ::close(done[1]);
    EXPECT_EQ(::read(done[0], &byte, 1), 1) << "the process has failed";
    ::close(done[0]);
  }
  ~KilledProcess() { kill(); }
  KilledProcess(const KilledProcess&) = delete;
  KilledProcess& operator=(const KilledProcess&) = delete;

  void kill() {
    if (child_ < 0) return;
    ::kill(child_, SIGKILL);
    ::waitpid(std::exchange(child_, -1), nullptr, 0);
  }

 private:
  pid_t child_;
};

/// Another user, where the test may become one.
void becomeAnotherUser() {
  if (::geteuid() != 0) return;
  if (::setgid(65534) != 0 || ::setuid(65534) != 0) ::_exit(1);
}

TEST(TargetLock, IsReleasedByAKillAndTakenOverByAnotherUser) {
  const TemporaryFolder folder;
  ::chmod(folder.path().c_str(), 01777);
  KilledProcess first([&] {
    ::umask(0077);
    static const auto lock = TargetLock::acquire(folder.path());
    if (!lock) ::_exit(1);
  });
  EXPECT_FALSE(TargetLock::acquire(folder.path()));
  first.kill();
  EXPECT_TRUE(std::filesystem::exists(folder / kLockFileName));
  const KilledProcess second([&] {
    becomeAnotherUser();
    static const auto lock = TargetLock::acquire(folder.path());
    if (!lock) ::_exit(1);
  });
  EXPECT_FALSE(TargetLock::acquire(folder.path()));
}

TEST(CopyWholeFiles, RefusesAFileThatChangesMeanwhile) {
  const TemporaryFolder folder;
  writeFile(folder / "a", "");
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
