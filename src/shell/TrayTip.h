// The tool tip of the icon in the notification area.
#pragma once

#include <cstddef>

namespace quillmoor {

/// Longest tip, in characters: the system's field has 64 with the terminating zero.
inline constexpr std::size_t kLongestTip = 63;

}  // namespace quillmoor
