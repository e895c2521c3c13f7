// The ANSI code page: what files of the program hold, while inside it all text is UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace quillmoor {

/// UTF-8 to the system's ANSI code page (Windows-1252 on Linux). A character outside the page becomes its
/// nearest likeness or "?"; bytes that are no UTF-8 are passed on as they are.
std::string ToAnsi(std::string_view utf8);

/// ANSI to UTF-8. Every byte has a character, so nothing is lost.
std::string FromAnsi(std::string_view ansi);

}  // namespace quillmoor
