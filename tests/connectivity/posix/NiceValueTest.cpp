// Priority classes as nice values, with and without the right to raise them.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <future>

#include "connectivity/modProcessPriority.h"
#include "platform/system/ProcessPriority.h"

namespace quillmoor::modProcessPriority {
namespace {

/// The result of `check`, which runs in a process of its own and may change its priority.
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

TEST(NiceValues, RunFromIdleToRealtimeAndReadAsTheNearestClass) {
  const struct {
    int nice;
    std::int32_t priorityClass;
    bool exact = true;
  } cases[] = {{19, 64},        {10, 16384},        {0, 32},           {-5, 32768},   {-10, 128}, {-20, 256},
               {18, 64, false}, {14, 16384, false}, {6, 16384, false}, {4, 32, false}};
  for (const auto& c : cases) {
    const auto setDirectly = [&] { return ::setpriority(PRIO_PROCESS, 0, c.nice) == 0; };
    if (!inChild(setDirectly)) continue;  // where the test itself runs nicer
    EXPECT_TRUE(inChild([&] { return setDirectly() && SetPriority(0, 0, 12) == c.priorityClass; })) << c.nice;
    EXPECT_TRUE(!c.exact || inChild([&] {
      return SetPriority(0, 0, c.priorityClass) == c.priorityClass &&
             ::getpriority(PRIO_PROCESS, 0) == c.nice;
    })) << c.nice;
  }
}

/// The nice value of a thread that was running before the process was put into a class.
int niceOfWorker(bool steppedBack, std::int32_t priorityClass) {
  std::promise<void> running, classSet;
  auto nice = std::async(std::launch::async, [&] {
    if (steppedBack) LowerThreadPriority();
    running.set_value();
    classSet.get_future().wait();
    return ::getpriority(PRIO_PROCESS, 0);
  });
  running.get_future().wait();
  SetPriority(0, 0, priorityClass);
  classSet.set_value();
  return nice.get();
}

TEST(NiceValues, HoldForThreadsThatRunAlready) {
  const struct {
    const char* name;
    bool steppedBack;
    std::int32_t priorityClass;
    int above;  // the process's
  } cases[] = {{"like the others", false, 64, 0},
               {"stepped back", true, 16384, 5},
               {"stepped back, at the end of the range", true, 64, 0}};
  for (const auto& c : cases) {
    if (::getpriority(PRIO_PROCESS, 0) > 19 - c.above) continue;  // no room to step back
    EXPECT_TRUE(inChild([&] {
      return niceOfWorker(c.steppedBack, c.priorityClass) == ::getpriority(PRIO_PROCESS, 0) + c.above;
    })) << c.name;
  }
}

}  // namespace
}  // namespace quillmoor::modProcessPriority
