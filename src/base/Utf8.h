// UTF-8, character by character (RFC 3629).
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillmoor {

struct Utf8Character {
  char32_t character = 0;
  std::size_t length = 0;  // bytes; 0 when the text does not begin with valid UTF-8
};

/// The first character of a non-empty text. Overlong forms and surrogates are invalid.
Utf8Character DecodeUtf8(std::string_view text);

/// The first `characters` characters of a UTF-8 text, or all of a shorter one.
inline std::string FirstCharacters(std::string_view text, std::size_t characters) {
  std::size_t bytes = 0;
  for (; characters != 0 && bytes < text.size(); --characters) {
    do ++bytes;
    while (bytes < text.size() && (static_cast<unsigned char>(text[bytes]) & 0xC0) == 0x80);
  }
  return std::string(text.substr(0, bytes));
}

/// Appends a character up to U+10FFFF.
void AppendUtf8(std::string& text, char32_t character);

}  // namespace quillmoor
