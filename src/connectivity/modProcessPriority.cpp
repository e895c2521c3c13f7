#include "connectivity/modProcessPriority.h"

#include "platform/system/ProcessPriority.h"

namespace quillmoor::modProcessPriority {

std::int32_t PositionToClass(std::int32_t position) {
  const bool onSlider = position >= 1 && position <= static_cast<std::int32_t>(kClasses.size());
  return onSlider ? kClasses[static_cast<std::size_t>(position - 1)].number : kNormalClass;
}

std::int32_t ClassToPosition(std::int32_t priorityClass) {
  std::int32_t position = 1;
  for (const PriorityClass& known : kClasses) {
    if (known.number == priorityClass) break;
    ++position;
  }
  return position;
}

std::string ClassName(std::int32_t priorityClass) {
  for (const PriorityClass& known : kClasses) {
    if (known.number == priorityClass) return std::string(known.name);
  }
  return "Unknown:" + std::to_string(priorityClass);
}

std::int32_t SetPriority(std::uint32_t processId, std::uintptr_t window, std::int32_t priorityClass) {
  if (processId == 0) processId = window != 0 ? ProcessOfWindow(window) : CurrentProcessId();
  return ApplyProcessPriority(processId, priorityClass);
}

}  // namespace quillmoor::modProcessPriority
