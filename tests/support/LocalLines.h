// Text as a transfer in text mode leaves it on this platform.
#pragma once

#include <string>
#include <string_view>

#include "platform/NvtText.h"

namespace quillmoor::testing {

/// The text, given with LF, with this platform's line ends.
inline std::string localLines(std::string_view text) {
  std::string lines;
  for (const char c : text) {
    if (c == '\n' && platformLineEnd() == LineEnd::crLf) lines += '\r';
    lines += c;
  }
  return lines;
}

}  // namespace quillmoor::testing
