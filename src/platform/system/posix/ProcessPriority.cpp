#include "platform/system/ProcessPriority.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace quillmoor {
namespace {

struct ClassNice {
  std::int32_t priorityClass;
  int nice;
};
constexpr ClassNice kClasses[] = {{64, 19}, {16384, 10}, {32, 0}, {32768, -5}, {128, -10}, {256, -20}};

std::optional<int> niceOf(id_t process) {
  errno = 0;  // -1 is a nice value as well
  const int nice = ::getpriority(PRIO_PROCESS, process);
  if (errno != 0) return std::nullopt;
  return nice;
}

std::int32_t nearestClass(int nice) {
  const ClassNice* nearest = kClasses;
  for (const ClassNice& known : kClasses) {
    if (std::abs(known.nice - nice) < std::abs(nearest->nice - nice)) nearest = &known;
  }
  return nearest->priorityClass;
}

struct Thread {
  id_t id;
  int nice;
};

std::vector<Thread> threadsOf(std::uint32_t process) {
  std::vector<Thread> threads;
  std::error_code none;
  const std::filesystem::path folder = "/proc/" + std::to_string(process) + "/task";
  for (std::filesystem::directory_iterator at(folder, none), end; !none && at != end; at.increment(none)) {
    const std::string name = at->path().filename().string();
    id_t id = 0;
    const auto [rest, error] = std::from_chars(name.data(), name.data() + name.size(), id);
    const auto nice = error == std::errc() && id != 0 ? niceOf(id) : std::nullopt;
    if (nice) threads.push_back({id, *nice});
  }
  return threads;
}

/// Linux has a nice value per thread; new threads inherit their creator's. A thread with lowered priority
/// keeps its distance.
void setNice(std::uint32_t process, int nice) {
  const std::vector<Thread> threads = threadsOf(process);  // before any inherits the new value
  const auto before = niceOf(process);
  ::setpriority(PRIO_PROCESS, process, nice);
  const auto inForce = niceOf(process);
  if (!before || !inForce) return;
  constexpr int kFirst = -20, kLast = 19;
  for (const Thread& thread : threads) {
    if (thread.id == process) continue;
    ::setpriority(PRIO_PROCESS, thread.id, std::clamp(*inForce + thread.nice - *before, kFirst, kLast));
  }
}

}  // namespace

std::uint32_t CurrentProcessId() {
  return static_cast<std::uint32_t>(::getpid());
}

std::uint32_t ProcessOfWindow(std::uintptr_t) {
  return 0;
}

std::int32_t ApplyProcessPriority(std::uint32_t processId, std::int32_t priorityClass) {
  // 0 means the calling process to the system.
  if (processId == 0 || !niceOf(processId)) return 0;
  for (const ClassNice& known : kClasses) {
    if (known.priorityClass == priorityClass) setNice(processId, known.nice);
  }
  const auto inForce = niceOf(processId);
  return inForce ? nearestClass(*inForce) : 0;
}

void LowerThreadPriority() {
  // On Linux the nice value is per thread.
  ::setpriority(PRIO_PROCESS, 0, ::getpriority(PRIO_PROCESS, 0) + 5);
}

}  // namespace quillmoor
