// The ANSI code page: what files of the program hold, while inside it all text is UTF-8.
#pragma once

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

/// The capital letter of the code page for a small one; any other character as it is.
char AnsiUpper(char c);

/// Equal but for the case of letters.
bool SameAnsiName(std::string_view a, std::string_view b);

}  // namespace quillmoor
