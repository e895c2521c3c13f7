// Lists inside one stored setting, joined with "|".
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillmoor {

inline constexpr char kListSeparator = '|';

/// In their order; "" has none.
inline std::vector<std::string> SplitList(std::string_view stored) {
  std::vector<std::string> items;
  while (!stored.empty()) {
    const std::size_t end = stored.find(kListSeparator);
    items.emplace_back(stored.substr(0, end));
    if (end == std::string_view::npos) break;
    stored.remove_prefix(end + 1);
    if (stored.empty()) items.emplace_back();
  }
  return items;
}

/// No separator before the first.
inline std::string JoinList(const std::vector<std::string>& items) {
  std::string stored;
  for (const std::string& item : items) {
    if (&item != &items.front()) stored += kListSeparator;
    stored += item;
  }
  return stored;
}

}  // namespace quillmoor
