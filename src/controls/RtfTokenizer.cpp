#include "controls/RtfTokenizer.h"

#include <charconv>
#include <limits>
#include <system_error>

namespace quillmoor {
namespace {

bool isLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

}  // namespace

RtfToken RtfTokenizer::next() {
  while (at_ < text_.size() && (text_[at_] == '\r' || text_[at_] == '\n' || text_[at_] == '\0')) ++at_;
  RtfToken token;
  token.at = at_;
  if (at_ == text_.size()) return token;
  const char c = text_[at_++];
  switch (c) {
    case '{':
      token.kind = RtfToken::Kind::open;
      return token;
    case '}':
      token.kind = RtfToken::Kind::close;
      return token;
    case '\\':
      return control(token.at);
    default:
      token.kind = RtfToken::Kind::byte;
      token.character = static_cast<unsigned char>(c);
      return token;
  }
}

RtfToken RtfTokenizer::control(std::size_t start) {
  RtfToken token;
  token.at = start;
  if (at_ == text_.size()) throw RtfError(start, "a backslash with nothing after it");
  const char c = text_[at_];
  if (isLetter(c)) return controlWord(start);
  ++at_;
  token.kind = RtfToken::Kind::symbol;
  token.character = static_cast<unsigned char>(c);
  if (c != '\'') return token;

  const std::string_view digits = text_.substr(at_, 2);
  unsigned value = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
  if (error != std::errc{} || digits.size() != 2 || end != digits.data() + 2)
    throw RtfError(start, "\\' without two hexadecimal digits");
  at_ += 2;
  token.kind = RtfToken::Kind::byte;
  token.character = static_cast<unsigned char>(value);
  return token;
}

RtfToken RtfTokenizer::controlWord(std::size_t start) {
  RtfToken token;
  token.at = start;
  token.kind = RtfToken::Kind::word;
  const std::size_t wordStart = at_;
  while (at_ < text_.size() && isLetter(text_[at_])) ++at_;
  token.word = text_.substr(wordStart, at_ - wordStart);

  const std::size_t numberStart = at_;
  const bool negative = at_ < text_.size() && text_[at_] == '-';
  std::size_t end = at_ + (negative ? 1 : 0);
  const std::size_t digitsStart = end;
  while (end < text_.size() && isDigit(text_[end])) ++end;
  if (end > digitsStart) {
    token.hasParameter = true;
    const auto result = std::from_chars(text_.data() + numberStart, text_.data() + end, token.parameter);
    if (result.ec == std::errc::result_out_of_range)
      token.parameter = negative ? std::numeric_limits<int>::min() : std::numeric_limits<int>::max();
    at_ = end;
  }
  if (at_ < text_.size() && text_[at_] == ' ') ++at_;  // one blank after a word is its delimiter

  if (token.word == "bin" && token.parameter > 0) {
    const auto length = static_cast<std::size_t>(token.parameter);
    if (length > text_.size() - at_)
      throw RtfError(start, "\\bin of " + std::to_string(length) + " bytes, more than the file has");
    at_ += length;
  }
  return token;
}

}  // namespace quillmoor
