#include "platform/CodePage.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "platform/Utf8.h"

namespace quillmoor {
namespace {

// Windows-1252 from 0x80 to 0x9F. The five bytes that the page leaves open stand for the C1 controls of the
// same number, as the Windows functions have it.
constexpr std::array<char16_t, 32> kUpper = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                             0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                             0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                             0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

char ansiOf(char32_t character) {
  if (character < 0x80 || (character >= 0xA0 && character < 0x100)) return static_cast<char>(character);
  const auto at = std::find(kUpper.begin(), kUpper.end(), character);
  if (at != kUpper.end()) return static_cast<char>(0x80 + (at - kUpper.begin()));
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
    AppendUtf8(utf8, byte >= 0x80 && byte < 0xA0 ? kUpper[byte - 0x80U] : byte);
  }
  return utf8;
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
