// The priority class of a process, by the class numbers of Windows.
#pragma once

#include <cstdint>

namespace quillmoor {

std::uint32_t CurrentProcessId();

/// The process that owns the window (an HWND as a number), 0 when there is no such window. On Linux a window
/// tells nothing about its process: always 0.
std::uint32_t ProcessOfWindow(std::uintptr_t window);

/// Puts the process, all its threads, into the class as far as the user may, and returns the class that is
/// then in force; 0 when there is no such process. What the system refuses stays as it was and is seen from
/// what is returned; so does a number that is no class. Threads that have stepped back stay behind.
///
/// On Linux the classes are nice values (setpriority(2)):
///
///     Idle 19 · Below Normal 10 · Normal 0 · Above Normal -5 · High -10 · Realtime -20
///
/// and a nice value between two of them reads back as the nearer class. Idle has no room behind it: there all
/// threads are equal, and are so from then on. Without the right to raise it (CAP_SYS_NICE or RLIMIT_NICE) a
/// process can only be made nicer, and that is not to be undone.
std::int32_t ApplyProcessPriority(std::uint32_t processId, std::int32_t priorityClass);

/// The calling thread steps back behind the program's other threads, for good: for work in the background
/// beside a thread that has to answer in time.
void StepBack();

}  // namespace quillmoor
