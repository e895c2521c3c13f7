#include "base/Fingerprint.h"

#include "base/Ascii.h"

namespace quillmoor {

std::string PlainFingerprint(std::string_view text) {
  constexpr std::size_t kDigits = 64;
  std::string digits;
  for (const char c : AsciiLower(text)) {
    if (c == ' ' || c == ':' || c == '\t') continue;
    const bool isDigit = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
    if (!isDigit || digits.size() == kDigits) return "";
    digits += c;
  }
  return digits.size() == kDigits ? digits : "";
}

}  // namespace quillmoor
