// The process priority: six classes, chosen by a slider.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace quillmoor::modProcessPriority {

inline constexpr std::int32_t kNormalClass = 32;

struct PriorityClass {
  std::int32_t number;  // the system's number, which is stored
  std::string_view name;
};

/// In the order of the slider's positions, which start at 1.
inline constexpr std::array<PriorityClass, 6> kClasses = {{{64, "Idle"},
                                                           {16384, "Below Normal"},
                                                           {kNormalClass, "Normal"},
                                                           {32768, "Above Normal"},
                                                           {128, "High"},
                                                           {256, "Realtime"}}};

/// The class at a slider position; kNormalClass for any other position.
std::int32_t PositionToClass(std::int32_t position);

/// The slider position of a class; 7, one past the slider's end, for any other number, which must not look
/// like the user's choice.
std::int32_t ClassToPosition(std::int32_t priorityClass);

/// The name of a class; "Unknown:" and the number for any other number.
std::string ClassName(std::int32_t priorityClass);

/// Sets the priority class of a process and returns the class that is then in effect; 0 when the process
/// cannot be queried. Process 0 means the window's owner or, without a window, this process. A refusal raises
/// nothing: the result shows it. For the classes on each system see platform/system/ProcessPriority.h.
std::int32_t SetPriority(std::uint32_t processId, std::uintptr_t window, std::int32_t priorityClass);

}  // namespace quillmoor::modProcessPriority
