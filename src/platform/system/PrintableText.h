// Makes foreign text, such as server replies and file names, safe for a terminal or a text control.
#pragma once

#include <string>
#include <string_view>

namespace quillmoor {

/// Whether a character is a control character: those of ASCII and Latin-1 (C0, DEL, C1), and those that
/// reverse the direction of the following text (U+202A..U+202E, U+2066..U+2069), which make a name look like
/// another.
bool IsControlCharacter(char32_t character);

/// Replaces each control character by "?", except those of ASCII in `kept`. Invalid UTF-8 bytes stay
/// unchanged, except 0x9B outside of a double-byte character: in Latin-1 it begins a terminal command.
std::string PrintableText(std::string_view text, std::string_view kept = {});

}  // namespace quillmoor
