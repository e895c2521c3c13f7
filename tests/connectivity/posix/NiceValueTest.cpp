// Priority classes as nice values, with and without the right to raise them.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <thread>

#include "connectivity/modProcessPriority.h"
#include "platform/system/ProcessPriority.h"

namespace quillmoor::modProcessPriority {
namespace {

/// Runs `check` in a process of its own, whose priority may be spoilt; its result.
template <class Check>
bool inChild(Check check) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(check() ? 0 : 1);
  int status = -1;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void giveUpTheRightToRaise() {
  const rlimit none{0, 0};
  ::setrlimit(RLIMIT_NICE, &none);
  if (::geteuid() == 0 && ::setuid(65534) != 0) ::_exit(2);
}

TEST(NiceValues, ReadsARefusalBack) {
  EXPECT_TRUE(inChild([] {
    giveUpTheRightToRaise();
    return SetPriority(0, 0, 64) == 64 && SetPriority(0, 0, 32) == 64 && SetPriority(0, 0, 256) == 64 &&
           ::getpriority(PRIO_PROCESS, 0) == 19;
  }));
}

TEST(NiceValues, LeavesTheProcessesOfOthersAlone) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs a process of another user";
  EXPECT_TRUE(inChild([] {
    const auto parent = static_cast<std::uint32_t>(::getppid());
    const std::int32_t before = SetPriority(parent, 0, 12);
    const std::int32_t other = before == 64 ? 32 : 64;
    giveUpTheRightToRaise();
    return SetPriority(parent, 0, other) == before;
  }));
}

TEST(NiceValues, RunFromIdleToRealtime) {
  const struct {
    std::int32_t priorityClass;
    int nice;
  } cases[] = {{64, 19}, {16384, 10}, {32, 0}, {32768, -5}, {128, -10}, {256, -20}};
  for (const auto& c : cases) {
    const bool mayRaise = inChild([&] { return ::setpriority(PRIO_PROCESS, 0, c.nice) == 0; });
    if (!mayRaise) continue;
    EXPECT_TRUE(inChild([&] {
      return SetPriority(0, 0, c.priorityClass) == c.priorityClass &&
             ::getpriority(PRIO_PROCESS, 0) == c.nice;
    })) << c.priorityClass;
  }
}

TEST(NiceValues, ReadAsTheNearestClass) {
  const struct {
    int nice;
    std::int32_t priorityClass;
  } cases[] = {{18, 64}, {14, 16384}, {6, 16384}, {4, 32}};
  for (const auto& c : cases) {
    EXPECT_TRUE(inChild([&] {
      // Refused where the test itself runs nicer than that.
      return ::setpriority(PRIO_PROCESS, 0, c.nice) != 0 || SetPriority(0, 0, 12) == c.priorityClass;
    })) << c.nice;
  }
}

/// What a thread has that ran before the process came into a class.
int niceOfWorker(bool steppedBack, std::int32_t priorityClass) {
  std::atomic<int> step = 0;
  const auto take = [&](int next) {
    step = next;
    step.notify_one();
  };
  int seen = -1;
  std::thread worker([&] {
    if (steppedBack) LowerThreadPriority();
    take(1);
    step.wait(1);
    seen = ::getpriority(PRIO_PROCESS, 0);
  });
  step.wait(0);
  SetPriority(0, 0, priorityClass);
  take(2);
  worker.join();
  return seen;
}

TEST(NiceValues, HoldForThreadsThatRunAlready) {
  const struct {
    const char* name;
    bool steppedBack;
    std::int32_t priorityClass;
    int behind;
  } cases[] = {{"beside the others", false, 64, 0},
               {"stepped back", true, 16384, 5},
               {"stepped back, at the end of the range", true, 64, 0}};
  for (const auto& c : cases) {
    if (::getpriority(PRIO_PROCESS, 0) > 19 - c.behind) continue;  // no room to step back
    EXPECT_TRUE(inChild([&] {
      const int seen = niceOfWorker(c.steppedBack, c.priorityClass);
      return seen == ::getpriority(PRIO_PROCESS, 0) + c.behind;
    })) << c.name;
  }
}

}  // namespace
}  // namespace quillmoor::modProcessPriority
