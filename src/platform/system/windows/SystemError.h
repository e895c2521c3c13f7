// Errors of the system, told in UTF-8.
#pragma once

#include <filesystem>
#include <string>
#include <system_error>

namespace quillmoor {

/// The numbers of std::system_category, with messages that may be put together with the program's own text.
const std::error_category& SystemErrors();

/// The system's words for an error number, without a line end.
std::string SystemErrorText(unsigned long number);

/// Raises std::system_error for the last error: "WHAT PATH: the system's own words".
[[noreturn]] void RaiseLastError(const char* what, const std::filesystem::path& path);

}  // namespace quillmoor
