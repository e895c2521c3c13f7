// Text from elsewhere, such as a server's words and file names, with nothing in it that a terminal or a text
// control obeys.
#pragma once

#include <string>
#include <string_view>

namespace quillmoor {

/// Whether a character is obeyed instead of shown: the control characters of ASCII and Latin-1 (C0, DEL, C1),
/// and those that reverse the direction of the text after them (U+202A..U+202E, U+2066..U+2069), which make
/// a name look like another.
bool IsControlCharacter(char32_t character);

/// The text with "?" for each control character, except for those of ASCII that `kept` lists. Bytes that are
/// no UTF-8 stay as they are. The exception is 0x9B where it is no half of a character: in Latin-1 it begins
/// a command to the terminal.
std::string PrintableText(std::string_view text, std::string_view kept = {});

}  // namespace quillmoor
