// Text from a server, made fit to be shown.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillmoor {

/// Appends `text` as valid UTF-8 without control characters (see PrintableText), line breaks among them, for
/// which "?" stands, or a blank for a tab. Bytes that are no UTF-8, as in the names of old servers, are read
/// as ANSI. Returns the number of characters.
std::size_t AppendShown(std::string& shown, std::string_view text);

inline std::string ShownText(std::string_view text) {
  std::string shown;
  AppendShown(shown, text);
  return shown;
}

}  // namespace quillmoor
