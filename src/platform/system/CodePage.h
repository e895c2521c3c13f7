// The ANSI code page: what files of the program hold, while inside it all text is UTF-8.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillmoor {

/// UTF-8 to the system's ANSI code page (Windows-1252 on Linux). A character outside the page becomes "?"
/// or, on Windows, its nearest likeness; bytes that are no UTF-8 are passed on as they are.
std::string ToAnsi(std::string_view utf8);

/// ANSI to UTF-8. In a code page of single bytes each has a character, so that nothing is lost.
std::string FromAnsi(std::string_view ansi);

/// Whether the text comes back from the code page as it was.
inline bool FitsAnsi(std::string_view utf8) {
  return FromAnsi(ToAnsi(utf8)) == utf8;
}

/// A part of a text that is UTF-8 but for what old servers send.
struct TextPiece {
  std::size_t bytes = 0;
  bool ansi = false;  ///< to be read in the code page
};

/// The first piece of a text that is not empty. In a code page of single bytes each byte that is no UTF-8 is
/// a piece; in one of double bytes, whose characters often look like UTF-8, a run of bytes beyond ASCII is
/// UTF-8 or ANSI as a whole, with an ASCII byte that is half of its last character. A backslash never is that
/// half: it separates the parts of a path.
TextPiece FirstPiece(std::string_view text);

/// The text as UTF-8: what is none of it is read in the code page, piece by piece.
std::string ToUtf8(std::string_view text);

/// The order of two ANSI names without regard to the case of letters: below 0 when `a` comes first, 0 when
/// they are the same name. They are compared character by character: the second byte of a double-byte
/// character may look like a letter and is none.
int CompareAnsiNames(std::string_view a, std::string_view b);

inline bool SameAnsiName(std::string_view a, std::string_view b) {
  return CompareAnsiNames(a, b) == 0;
}

}  // namespace quillmoor
