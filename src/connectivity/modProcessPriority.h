// How much processor time the program takes: six priority classes, chosen by a slider.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace quillmoor::modProcessPriority {

inline constexpr std::int32_t kNormalClass = 32;

struct PriorityClass {
  std::int32_t number;  // of the system; this is what is stored
  std::string_view name;
};

/// In the order of the slider, whose positions count from 1.
inline constexpr std::array<PriorityClass, 6> kClasses = {{{64, "Idle"},
                                                           {16384, "Below Normal"},
                                                           {kNormalClass, "Normal"},
                                                           {32768, "Above Normal"},
                                                           {128, "High"},
                                                           {256, "Realtime"}}};

/// The class at a position of the slider; normal for any other position.
std::int32_t PositionToClass(std::int32_t position);

/// The position of a class. Any other number gives 7, one past the slider's end: it must not look like a
/// choice that the user has made.
std::int32_t ClassToPosition(std::int32_t priorityClass);

/// "Unknown:" and the number for a number that is no class.
std::string ClassName(std::int32_t priorityClass);

/// Puts a process into the class and returns the class that is then in force, 0 when the process cannot even
/// be asked. Process 0 is the owner of the window or, without a window, this process. A refusal is no error:
/// what is returned tells. platform/system/ProcessPriority.h says what the classes are on each system.
std::int32_t SetPriority(std::uint32_t processId, std::uintptr_t window, std::int32_t priorityClass);

}  // namespace quillmoor::modProcessPriority
