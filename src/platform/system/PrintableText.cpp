#include "platform/system/PrintableText.h"

#include <algorithm>

#include "base/Utf8.h"
#include "platform/system/CodePage.h"

namespace quillmoor {
namespace {

bool isPlain(char c) {
  return c >= ' ' && c < '\x7F';
}

void appendUtf8(std::string& shown, std::string_view text, std::string_view kept) {
  while (!text.empty()) {
    const Utf8Character next = DecodeUtf8(text);
    const bool control = IsControlCharacter(next.character) && kept.find(text[0]) == std::string_view::npos;
    control ? shown.append(1, '?') : shown.append(text, 0, next.length);
    text.remove_prefix(next.length);
  }
}

}  // namespace

bool IsControlCharacter(char32_t c) {
  return c < 0x20 || (c >= 0x7F && c < 0xA0) || (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

std::string PrintableText(std::string_view text, std::string_view kept) {
  std::string shown;
  shown.reserve(text.size());
  while (!text.empty()) {
    // Nearly all text is ASCII, and a log is long.
    const auto plain = std::find_if_not(text.begin(), text.end(), isPlain);
    shown.append(text.begin(), plain);
    text.remove_prefix(static_cast<std::size_t>(plain - text.begin()));
    if (text.empty()) break;
    if (static_cast<unsigned char>(text[0]) < 0x80) {
      shown += kept.find(text[0]) != std::string_view::npos ? text[0] : '?';
      text.remove_prefix(1);
      continue;
    }
    const TextPiece piece = FirstPiece(text);
    const std::string_view bytes = text.substr(0, piece.bytes);
    if (!piece.ansi) {
      appendUtf8(shown, bytes, kept);
    } else {
      shown += bytes == "\x9B" ? "?" : bytes;
    }
    text.remove_prefix(piece.bytes);
  }
  return shown;
}

}  // namespace quillmoor
