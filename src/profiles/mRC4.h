// How passwords are kept on disk: RC4 over their ANSI bytes, as Base64 text. This protects only against a
// glance at the file: the key is the same for everyone.
#pragma once

#include <string>

namespace quillmoor::mRC4 {

/// The same text always has the same result; "" for "".
std::string Encipher(const std::string& plainText);

/// Raises mBase64::DecodeError for a text that Encipher cannot have written. A well-formed but wrong one is
/// deciphered to a meaningless text.
std::string Decipher(const std::string& enciphered);

}  // namespace quillmoor::mRC4
