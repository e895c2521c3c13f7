#include "platform/CodePage.h"

#include <algorithm>
#include <cstddef>

#include "platform/Utf8.h"
#include "platform/Windows1252.h"

namespace quillmoor {
namespace {

char ansiOf(char32_t character) {
  if (character < 0x80 || (character >= 0xA0 && character < 0x100)) return static_cast<char>(character);
  const auto at = std::find(kWindows1252Upper.begin(), kWindows1252Upper.end(), character);
  if (at != kWindows1252Upper.end()) return static_cast<char>(0x80 + (at - kWindows1252Upper.begin()));
  return '?';
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

TextPiece FirstPiece(std::string_view text) {
  std::size_t bytes = 0;
  while (bytes < text.size()) {
    const std::size_t length = DecodeUtf8(text.substr(bytes)).length;
    if (length == 0) return bytes == 0 ? TextPiece{1, true} : TextPiece{bytes, false};
    bytes += length;
  }
  return {bytes, false};
}

char AnsiUpper(char c) {
  const auto byte = static_cast<unsigned char>(c);
  if ((byte >= 'a' && byte <= 'z') || (byte >= 0xE0 && byte <= 0xFE && byte != 0xF7))
    return static_cast<char>(byte - 0x20);
  if (byte == 0x9A || byte == 0x9C || byte == 0x9E)
    return static_cast<char>(byte - 0x10);  // s, oe and z with marks
  return byte == 0xFF ? '\x9F' : c;         // y with dots
}

bool SameAnsiName(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return AnsiUpper(x) == AnsiUpper(y); });
}

}  // namespace quillmoor
