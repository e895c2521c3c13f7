// Letters without regard to case where only those of ASCII count: extensions, names of formats, keywords.
#pragma once

#include <string>
#include <string_view>

namespace quillmoor {

constexpr char AsciiLower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

inline std::string AsciiLower(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = AsciiLower(c);
  return lower;
}

}  // namespace quillmoor
