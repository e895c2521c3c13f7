#include "platform/system/CodePage.h"

#include <algorithm>
#include <cstddef>

#include "base/Utf8.h"
#include "base/Windows1252.h"

namespace quillmoor {
namespace {

char ansiOf(char32_t character) {
  if (character < 0x80 || (character >= 0xA0 && character < 0x100)) return static_cast<char>(character);
  const auto at = std::find(kWindows1252Upper.begin(), kWindows1252Upper.end(), character);
  if (at != kWindows1252Upper.end()) return static_cast<char>(0x80 + (at - kWindows1252Upper.begin()));
  return '?';
}

/// The upper-case form of a letter; any other character unchanged.
char32_t upper(char c) {
  const auto byte = static_cast<unsigned char>(c);
  if ((byte >= 'a' && byte <= 'z') || (byte >= 0xE0 && byte <= 0xFE && byte != 0xF7)) return byte - 0x20U;
  if (byte == 0x9A || byte == 0x9C || byte == 0x9E)
    return FromWindows1252(static_cast<unsigned char>(byte - 0x10));  // s and z with caron, oe
  return FromWindows1252(byte == 0xFF ? 0x9F : byte);                 // y with diaeresis
}

}  // namespace

std::string ToAnsi(std::string_view utf8) {
  std::string ansi;
  ansi.reserve(utf8.size());
  while (!utf8.empty()) {
    const Utf8Character next = DecodeUtf8(utf8);
    ansi += next.length == 0 ? utf8[0] : ansiOf(next.character);
    utf8.remove_prefix(std::max<std::size_t>(next.length, 1));
  }
  return ansi;
}

std::string FromAnsi(std::string_view ansi) {
  std::string utf8;
  utf8.reserve(ansi.size());
  for (const char c : ansi) {
    const auto byte = static_cast<unsigned char>(c);
    AppendUtf8(utf8, FromWindows1252(byte));
  }
  return utf8;
}

std::string ToUtf8(std::string_view text) {
  std::string utf8;
  utf8.reserve(text.size());
  while (!text.empty()) {
    const TextPiece piece = FirstPiece(text);
    utf8 += piece.ansi ? FromAnsi(text.substr(0, piece.bytes)) : text.substr(0, piece.bytes);
    text.remove_prefix(piece.bytes);
  }
  return utf8;
}

TextPiece FirstPiece(std::string_view text) {
  std::size_t bytes = 0;
  while (bytes < text.size()) {
    const std::size_t length = DecodeUtf8(text.substr(bytes)).length;
    if (length == 0) return bytes == 0 ? TextPiece{1, true} : TextPiece{bytes, false};
    bytes += length;
  }
  return {bytes, false};
}

int CompareAnsiNames(std::string_view a, std::string_view b) {
  const auto [x, y] = std::mismatch(a.begin(), a.end(), b.begin(), b.end(),
                                    [](char one, char other) { return upper(one) == upper(other); });
  if (x == a.end() || y == b.end()) return (x != a.end()) - (y != b.end());
  return upper(*x) < upper(*y) ? -1 : 1;
}

}  // namespace quillmoor
