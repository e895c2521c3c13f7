// Programs that run beside this one, where their ends are not heeded as usual.
#include "platform/system/posix/ChildProcess.h"

#include <gtest/gtest.h>

#include <csignal>

#include "platform/system/LocalTime.h"

namespace quillmoor {
namespace {

bool ends(ChildProcess& child) {
  const std::int64_t end = TickCountMs() + 20'000;
  while (!child.poll()) {
    if (TickCountMs() > end) return false;
    child.waitForOutput(std::chrono::milliseconds(2));
  }
  return true;
}

class ChildProcessTest : public ::testing::Test {
 protected:
  ~ChildProcessTest() override { ::signal(SIGCHLD, SIG_DFL); }
  const std::vector<std::string> command{"sh", "-c", "echo said; exit 3"};
};

TEST_F(ChildProcessTest, TellsItsStatusWhereTheEndsOfChildrenAreIgnored) {
  ::signal(SIGCHLD, SIG_IGN);
  ChildProcess child(command);
  ASSERT_TRUE(ends(child));
  EXPECT_EQ(child.exitStatus(), 3);
  EXPECT_EQ(child.output(), "said\n");
}

TEST_F(ChildProcessTest, HasEndedWithoutAStatusWhenNobodyKeptOne) {
  ChildProcess child(command);
  ::signal(SIGCHLD, SIG_IGN);
  ASSERT_TRUE(ends(child));
  EXPECT_EQ(child.output(), "said\n");
}

}  // namespace
}  // namespace quillmoor
