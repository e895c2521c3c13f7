// Lists inside one text.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quillmoor {

/// The parts between the separators, in their order, empty ones included. A text without a separator, ""
/// among them, is one part.
inline std::vector<std::string> SplitText(std::string_view text, std::string_view separator) {
  std::vector<std::string> parts;
  for (;;) {
    const std::size_t end = text.find(separator);
    parts.emplace_back(text.substr(0, end));
    if (end == std::string_view::npos) return parts;
    text.remove_prefix(end + separator.size());
  }
}

/// Has no separator before the first part or after the last.
inline std::string JoinText(const std::vector<std::string>& parts, std::string_view separator) {
  std::string text;
  for (const std::string& part : parts) {
    if (&part != &parts.front()) text += separator;
    text += part;
  }
  return text;
}

}  // namespace quillmoor
