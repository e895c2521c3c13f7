// Child processes where the system keeps no exit status of them.
#include "platform/system/posix/ChildProcess.h"

#include <gtest/gtest.h>

#include <csignal>

#include "platform/system/LocalTime.h"

namespace quillmoor {
namespace {

TEST(ChildProcess, EndsWhereTheExitsOfChildrenAreIgnored) {
  for (const bool before : {true, false}) {
    ::signal(SIGCHLD, before ? SIG_IGN : SIG_DFL);
    ChildProcess child({"sh", "-c", "echo said; exit 3"});
    if (!before) ::signal(SIGCHLD, SIG_IGN);
    const std::int64_t end = TickCountMs() + 20'000;
    while (!child.poll() && TickCountMs() < end) child.waitForOutput(std::chrono::milliseconds(2));
    ::signal(SIGCHLD, SIG_DFL);
    EXPECT_TRUE(child.poll());
    EXPECT_EQ(child.output(), "said\n");
    EXPECT_TRUE(child.exitStatus() == 3 || !before) << "ignored later, it may be lost";
  }
}

}  // namespace
}  // namespace quillmoor
