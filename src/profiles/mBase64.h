// Base64 (RFC 4648 §4) of the stored passwords: one line, whatever the length.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace quillmoor::mBase64 {

/// Raised for a character outside the alphabet and "=", a blank or a line break included.
class DecodeError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

std::string Encode(std::string_view bytes);

/// Characters after the last whole group of four are ignored.
std::string Decode(std::string_view text);

}  // namespace quillmoor::mBase64
