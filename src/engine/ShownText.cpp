#include "engine/ShownText.h"

#include <algorithm>

#include "base/Utf8.h"
#include "platform/system/CodePage.h"
#include "platform/system/PrintableText.h"

namespace quillmoor {
namespace {

bool isPrintableAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c < '\x7F'; });
}

std::size_t appendUtf8(std::string& shown, std::string_view text) {
  std::size_t characters = 0;
  for (; !text.empty(); ++characters) {
    const Utf8Character one = DecodeUtf8(text);
    if (IsControlCharacter(one.character)) {
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
  if (isPrintableAscii(text)) {  // nearly every log line
    shown += text;
    return text.size();
  }
  // Decoding the code page may yield further control characters.
  return appendUtf8(shown, ToUtf8(PrintableText(text, "\t")));
}

}  // namespace quillmoor
