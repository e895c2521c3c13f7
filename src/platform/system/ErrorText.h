// The system's error messages as UTF-8.
#pragma once

#include <string>
#include <system_error>

namespace quillmoor {

/// `error.message()` as UTF-8. On Windows the original is ANSI text in the user's language.
std::string ErrorText(const std::error_code& error);

}  // namespace quillmoor
