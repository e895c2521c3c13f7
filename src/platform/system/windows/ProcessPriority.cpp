#include "platform/system/ProcessPriority.h"

#include <windows.h>

namespace quillmoor {

std::uint32_t CurrentProcessId() {
  return ::GetCurrentProcessId();
}

std::uint32_t ProcessOfWindow(std::uintptr_t window) {
  DWORD process = 0;
  ::GetWindowThreadProcessId(reinterpret_cast<HWND>(window), &process);
  return process;
}

std::int32_t ApplyProcessPriority(std::uint32_t processId, std::int32_t priorityClass) {
  HANDLE process = ::OpenProcess(PROCESS_SET_INFORMATION | PROCESS_QUERY_INFORMATION, FALSE, processId);
  if (process) {
    ::SetPriorityClass(process, static_cast<DWORD>(priorityClass));
  } else {
    process = ::OpenProcess(PROCESS_QUERY_INFORMATION, FALSE, processId);
  }
  if (!process) return 0;
  const auto inForce = static_cast<std::int32_t>(::GetPriorityClass(process));
  ::CloseHandle(process);
  return inForce;
}

void LowerThreadPriority() {
  ::SetThreadPriority(::GetCurrentThread(), THREAD_PRIORITY_BELOW_NORMAL);
}

}  // namespace quillmoor
