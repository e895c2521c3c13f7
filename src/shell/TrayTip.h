// The text that the icon in the notification area shows under the pointer.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillmoor {

/// Longest tip, in characters: the system's field has 64 with the terminating zero.
inline constexpr std::size_t kLongestTip = 63;

/// The first characters of a UTF-8 text, at most so many.
inline std::string FirstCharacters(std::string_view text, std::size_t characters) {
  std::size_t bytes = 0;
  for (; characters != 0 && bytes < text.size(); --characters) {
    do ++bytes;
    while (bytes < text.size() && (static_cast<unsigned char>(text[bytes]) & 0xC0) == 0x80);
  }
  return std::string(text.substr(0, bytes));
}

}  // namespace quillmoor
