#include "engine/ShownText.h"

#include <algorithm>

#include "platform/CodePage.h"
#include "platform/Utf8.h"

namespace quillmoor {
namespace {

bool isControl(char32_t character) {
  return character < 0x20 || (character >= 0x7F && character < 0xA0);
}

}  // namespace

std::size_t AppendShown(std::string& shown, std::string_view text) {
  std::size_t characters = 0;
  while (!text.empty()) {
    const Utf8Character one = DecodeUtf8(text);
    const std::size_t bytes = std::max<std::size_t>(one.length, 1);
    if (one.length == 0) {
      const std::string ansi = FromAnsi(text.substr(0, 1));
      shown += isControl(DecodeUtf8(ansi).character) ? "?" : ansi;
    } else if (isControl(one.character)) {
      shown += one.character == '\t' ? ' ' : '?';
    } else {
      shown += text.substr(0, bytes);
    }
    ++characters;
    text.remove_prefix(bytes);
  }
  return characters;
}

}  // namespace quillmoor
