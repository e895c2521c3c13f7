// The system's text is UTF-16: to it and back, and paths in the form that has no limit of length.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "platform/system/CodePage.h"

namespace quillmoor {

/// UTF-8 to UTF-16; what is no UTF-8 (see FirstPiece) is read in the ANSI code page, or the one given.
std::wstring Widen(std::string_view utf8, unsigned codePage = 0);

/// For the code page given; 0 is the ANSI one.
TextPiece FirstPiece(std::string_view text, unsigned codePage);
int CompareAnsiNames(std::string_view a, std::string_view b, unsigned codePage);

/// UTF-16 to UTF-8; half a surrogate pair becomes U+FFFD.
std::string Narrow(std::wstring_view wide);

/// The path for a function of the system. One that comes near the 260 characters that the plain form may have
/// is made absolute and put into the "\\?\" form, which lifts the limit.
std::wstring WidePath(const std::filesystem::path& path);
std::wstring WidePath(const std::string& text);

}  // namespace quillmoor
