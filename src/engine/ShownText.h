// Makes text from a server displayable.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillmoor {

/// Appends `text` as valid UTF-8 in which "?" replaces control characters (see PrintableText), including line
/// breaks, and a blank replaces a tab. Bytes that are not UTF-8, as some servers send in names, are read as
/// ANSI. Returns the number of characters appended.
std::size_t AppendShown(std::string& shown, std::string_view text);

inline std::string ShownText(std::string_view text) {
  std::string shown;
  AppendShown(shown, text);
  return shown;
}

}  // namespace quillmoor
