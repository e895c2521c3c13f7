// Lists inside one stored setting, joined with "|".
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/SplitText.h"

namespace quillmoor {

inline constexpr std::string_view kListSeparator = "|";

/// In their order; "" has none.
inline std::vector<std::string> SplitList(std::string_view stored) {
  return stored.empty() ? std::vector<std::string>() : SplitText(stored, kListSeparator);
}

inline std::string JoinList(const std::vector<std::string>& items) {
  return JoinText(items, kListSeparator);
}

}  // namespace quillmoor
