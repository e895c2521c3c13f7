// The priority class of a process, by the class numbers of Windows.
#pragma once

#include <cstdint>

namespace quillmoor {

std::uint32_t CurrentProcessId();

/// The process that owns the window (an HWND as a number), 0 when there is no such window. Always 0 on Linux,
/// where a window does not identify its process.
std::uint32_t ProcessOfWindow(std::uintptr_t window);

/// Sets the priority class of the process and all its threads as far as the user may, and returns the class
/// then in force; 0 when the process does not exist. What the system refuses stays unchanged and shows in the
/// result, as does an invalid class. Threads with lowered priority stay lower.
///
/// On Linux the classes are nice values (setpriority(2)):
///
///     Idle 19 · Below Normal 10 · Normal 0 · Above Normal -5 · High -10 · Realtime -20
///
/// and a nice value in between reads back as the nearest class. Idle is the lowest nice value: there all
/// threads become equal, permanently. Without the right to raise it (CAP_SYS_NICE or RLIMIT_NICE) a process
/// can only get a lower priority, which cannot be undone.
std::int32_t ApplyProcessPriority(std::uint32_t processId, std::int32_t priorityClass);

/// Permanently lowers the calling thread's priority below that of the program's other threads: for background
/// work beside a thread that must respond in time.
void LowerThreadPriority();

}  // namespace quillmoor
