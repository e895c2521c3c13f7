// Splits rich text (RTF 1.9) into tokens: braces, control words, control symbols, bytes of text.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

namespace quillmoor {

/// The message says what is wrong and at which byte of the text.
class RtfError : public std::runtime_error {
 public:
  RtfError(std::size_t at, const std::string& what)
      : std::runtime_error("byte " + std::to_string(at) + ": " + what) {}
  explicit RtfError(const std::string& what) : std::runtime_error(what) {}
};

struct RtfToken {
  enum class Kind { open, close, word, symbol, byte, end } kind = Kind::end;
  std::string_view word;        // for a control word, without the backslash
  bool hasParameter = false;    // for a control word
  int parameter = 0;            // 0 if there is none; clamped to the range of int
  unsigned char character = 0;  // of a control symbol, or a byte of text (literal or from \'hh)
  std::size_t at = 0;           // offset of its first byte
};

class RtfTokenizer {
 public:
  /// The text must outlive the tokenizer and the tokens.
  explicit RtfTokenizer(std::string_view text) : text_(text) {}

  /// Skips line ends, which have no meaning in RTF, and the data of \bin. Raises RtfError for a backslash at
  /// the end, a \' without two hexadecimal digits, and \bin data beyond the end of the text.
  RtfToken next();

 private:
  RtfToken control(std::size_t start);
  RtfToken controlWord(std::size_t start);

  std::string_view text_;
  std::size_t at_ = 0;
};

}  // namespace quillmoor
