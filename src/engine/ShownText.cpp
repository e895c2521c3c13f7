#include "engine/ShownText.h"

#include "platform/CodePage.h"
#include "platform/Utf8.h"

namespace quillmoor {
namespace {

bool isControl(char32_t character) {
  return character < 0x20 || (character >= 0x7F && character < 0xA0);
}

std::size_t appendUtf8(std::string& shown, std::string_view text) {
  std::size_t characters = 0;
  for (; !text.empty(); ++characters) {
    const Utf8Character one = DecodeUtf8(text);
    if (isControl(one.character)) {
      shown += one.character == '\t' ? ' ' : '?';
    } else {
      shown += text.substr(0, one.length);
    }
    text.remove_prefix(one.length);
  }
  return characters;
}

}  // namespace

std::size_t AppendShown(std::string& shown, std::string_view text) {
  std::size_t characters = 0;
  while (!text.empty()) {
    const TextPiece piece = FirstPiece(text);
    const std::string utf8(text.substr(0, piece.bytes));
    characters += appendUtf8(shown, piece.ansi ? FromAnsi(utf8) : utf8);
    text.remove_prefix(piece.bytes);
  }
  return characters;
}

}  // namespace quillmoor
