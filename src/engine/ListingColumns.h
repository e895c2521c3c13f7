// The columns of one listing line: its words, numbers and sizes.
#pragma once

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "engine/RemoteListing.h"

namespace quillmoor::listing {

inline bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

inline bool isNumber(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), isDigit);
}

/// The value of a text of digits only; nothing when it does not fit an int.
inline std::optional<int> smallNumber(std::string_view text) {
  int value = 0;
  const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (!isNumber(text) || error != std::errc() || rest != text.data() + text.size()) return std::nullopt;
  return value;
}

/// The first kMost words of a line: enough to reach past the date.
struct Words {
  static constexpr std::size_t kMost = 20;

  explicit Words(std::string_view line) {
    const char* at = line.data();
    const char* const end = at + line.size();
    while (count < kMost) {
      at = std::find_if(at, end, [](char c) { return c != ' '; });
      if (at == end) break;
      const char* const start = at;
      at = std::find(at, end, ' ');
      word[count++] = {start, static_cast<std::size_t>(at - start)};
    }
  }
  /// Empty when there are fewer words.
  std::string_view operator[](std::size_t i) const { return i < count ? word[i] : std::string_view(); }
  /// The text from the beginning of word `first` to the end of word `last`.
  std::string_view span(std::size_t first, std::size_t last) const {
    return {word[first].data(),
            static_cast<std::size_t>(word[last].data() + word[last].size() - word[first].data())};
  }

  std::array<std::string_view, kMost> word;
  std::size_t count = 0;
};

/// One blank separates a name from the column before it; further blanks belong to the name.
inline std::string_view nameAfter(std::string_view line, std::string_view column) {
  const auto end = static_cast<std::size_t>(column.data() + column.size() - line.data());
  return line.substr(std::min(end + 1, line.size()));
}

/// Letters of any language, optionally followed by a dot.
bool isAnyWord(std::string_view word);

/// "1024", "1,234,567", "1.234.567", or the major and minor number of a device; rounded ones like "1.5K",
/// "3,4M", "2GiB". Servers that count in 32 bits list sizes beyond 2 GB as negative.
bool isSize(std::string_view word);

/// Stores the size that `word` states; isSize(word) must hold. A rounded size, or one that exceeds 64 bits,
/// leaves the entry without an exact size.
void setSize(RemoteEntry& entry, std::string_view word);

}  // namespace quillmoor::listing
