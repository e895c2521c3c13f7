// System errors with UTF-8 messages.
#pragma once

#include <filesystem>
#include <string>
#include <system_error>

namespace quillmoor {

/// The codes of std::system_category, with messages in UTF-8 like the program's own text.
const std::error_category& SystemErrors();

/// The system's message for an error code, without a line end.
std::string SystemErrorText(unsigned long number);

/// Raises std::system_error for the last error: "WHAT PATH: the system's message".
[[noreturn]] void RaiseLastError(const char* what, const std::filesystem::path& path);

}  // namespace quillmoor
