// The system's own words for its errors, as UTF-8.
#pragma once

#include <string>
#include <system_error>

namespace quillmoor {

/// What `error.message()` says. On Windows that is ANSI text in the user's language.
std::string ErrorText(const std::error_code& error);

}  // namespace quillmoor
