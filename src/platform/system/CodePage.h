// The ANSI code page, in which the program's files are written; inside the program all text is UTF-8.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillmoor {

/// UTF-8 to the system's ANSI code page (Windows-1252 on Linux). A character outside the page becomes "?" or,
/// on Windows, a similar one; invalid UTF-8 bytes are copied unchanged.
std::string ToAnsi(std::string_view utf8);

/// ANSI to UTF-8. Lossless for single-byte code pages, where each byte is a character.
std::string FromAnsi(std::string_view ansi);

/// Whether the text survives conversion to the code page and back.
inline bool FitsAnsi(std::string_view utf8) {
  return FromAnsi(ToAnsi(utf8)) == utf8;
}

/// A piece of text in which UTF-8 and the ANSI code page may be mixed, as old servers send it.
struct TextPiece {
  std::size_t bytes = 0;
  bool ansi = false;  ///< encoded in the code page
};

/// The first piece of a non-empty text. In a single-byte code page each invalid UTF-8 byte is a piece. In a
/// double-byte one, whose characters often look like UTF-8, a run of non-ASCII bytes is UTF-8 or ANSI as a
/// whole, including an ASCII byte that is half of its last character. A backslash never is that half: it
/// separates the parts of a path.
TextPiece FirstPiece(std::string_view text);

/// Converts a text to UTF-8: pieces that are not UTF-8 are read in the code page.
std::string ToUtf8(std::string_view text);

/// Compares two ANSI names without regard to case: below 0 when `a` comes first, 0 when they are equal.
/// Compares characters, not bytes: the second byte of a double-byte character may look like a letter.
int CompareAnsiNames(std::string_view a, std::string_view b);

inline bool SameAnsiName(std::string_view a, std::string_view b) {
  return CompareAnsiNames(a, b) == 0;
}

}  // namespace quillmoor
