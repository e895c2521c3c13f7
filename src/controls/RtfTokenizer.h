// Rich text (RTF 1.9) cut into what its reader looks at: braces, control words, control symbols, bytes of
// text.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

namespace quillmoor {

/// What is wrong and at which byte of the text.
class RtfError : public std::runtime_error {
 public:
  RtfError(std::size_t at, const std::string& what)
      : std::runtime_error("byte " + std::to_string(at) + ": " + what) {}
  explicit RtfError(const std::string& what) : std::runtime_error(what) {}
};

struct RtfToken {
  enum class Kind { open, close, word, symbol, byte, end } kind = Kind::end;
  std::string_view word;        // of a control word, without the backslash
  bool hasParameter = false;    // of a control word
  int parameter = 0;            // 0 without one; numbers beyond int end at its bounds
  unsigned char character = 0;  // a control symbol's, or the byte of text (as it stands, or from \'hh)
  std::size_t at = 0;           // where it begins
};

class RtfTokenizer {
 public:
  /// The text must outlive the tokenizer and the tokens.
  explicit RtfTokenizer(std::string_view text) : text_(text) {}

  /// Line ends that are none in the text, and the data of \bin, are passed over. Raises RtfError for a \'
  /// without two hexadecimal digits, and for \bin data that the text does not hold.
  RtfToken next();

 private:
  RtfToken control(std::size_t start);
  RtfToken controlWord(std::size_t start);

  std::string_view text_;
  std::size_t at_ = 0;
};

}  // namespace quillmoor
