#include "base/Utf8.h"

namespace quillmoor {

Utf8Character DecodeUtf8(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  if (lead < 0x80) return {lead, 1};
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return {};
  char32_t character = lead & (0xFFU >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return {};
    character = (character << 6) | (byte(i) & 0x3F);
  }
  const bool overlong = (length == 3 && character < 0x800) || (length == 4 && character < 0x10000);
  if (overlong || (character >= 0xD800 && character < 0xE000) || character > 0x10FFFF) return {};
  return {character, length};
}

void AppendUtf8(std::string& text, char32_t character) {
  const auto trail = [&](unsigned shift) { text += static_cast<char>(0x80 | ((character >> shift) & 0x3F)); };
  if (character < 0x80) {
    text += static_cast<char>(character);
  } else if (character < 0x800) {
    text += static_cast<char>(0xC0 | (character >> 6));
    trail(0);
  } else if (character < 0x10000) {
    text += static_cast<char>(0xE0 | (character >> 12));
    trail(6);
    trail(0);
  } else {
    text += static_cast<char>(0xF0 | (character >> 18));
    trail(12);
    trail(6);
    trail(0);
  }
}

}  // namespace quillmoor
