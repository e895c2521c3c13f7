// The system's text is UTF-16: to it and back, and paths in the form that has no limit of length.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace quillmoor {

/// UTF-8 to UTF-16; a byte that is no UTF-8 is read in the ANSI code page.
std::wstring Widen(std::string_view utf8);

/// UTF-16 to UTF-8; half a surrogate pair becomes U+FFFD.
std::string Narrow(std::wstring_view wide);

/// The path for a function of the system. One that comes near the 260 characters that the plain form may have
/// is made absolute and put into the "\\?\" form, which lifts the limit.
std::wstring WidePath(const std::filesystem::path& path);
std::wstring WidePath(const std::string& text);

}  // namespace quillmoor
