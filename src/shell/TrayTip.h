// The text that the icon in the notification area shows under the pointer.
#pragma once

#include <cstddef>

namespace quillmoor {

/// Longest tip, in characters: the system's field has 64 with the terminating zero.
inline constexpr std::size_t kLongestTip = 63;

}  // namespace quillmoor
