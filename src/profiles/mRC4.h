// How passwords are kept on disk: RC4 over their ANSI bytes, as Base64 text. It keeps a password from being
// read over someone's shoulder and no more: the key is the same for everyone.
#pragma once

#include <string>

namespace quillmoor::mRC4 {

/// The same text always gives the same result; "" gives "".
std::string Encipher(const std::string& plainText);

/// Raises mBase64::DecodeError for a text that Encipher cannot have written. A well-formed but wrong one
/// gives a meaningless text.
std::string Decipher(const std::string& enciphered);

}  // namespace quillmoor::mRC4
