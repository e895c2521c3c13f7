// Conversion to and from the system's UTF-16 text, and paths in the form without a length limit.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "platform/system/CodePage.h"

namespace quillmoor {

/// UTF-8 to UTF-16; pieces that are not UTF-8 (see FirstPiece) are read in the ANSI code page, or the one
/// given.
std::wstring Widen(std::string_view utf8, unsigned codePage = 0);

/// For the given code page; 0 is the ANSI one.
TextPiece FirstPiece(std::string_view text, unsigned codePage);
int CompareAnsiNames(std::string_view a, std::string_view b, unsigned codePage);

/// UTF-16 to UTF-8; an unpaired surrogate becomes U+FFFD.
std::string Narrow(std::wstring_view wide);

/// The path for a system function. A path near the limit of 260 characters is made absolute and gets the
/// prefix "\\?\", which lifts the limit.
std::wstring WidePath(const std::filesystem::path& path);
std::wstring WidePath(const std::string& text);

}  // namespace quillmoor
