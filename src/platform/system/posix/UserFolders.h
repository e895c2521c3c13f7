// The user's folders for program data (XDG Base Directory).
#pragma once

#include <filesystem>

namespace quillmoor {

/// $XDG_CONFIG_HOME, else ~/.config. Raises std::runtime_error when neither exists.
std::filesystem::path UserConfigurationFolder();

}  // namespace quillmoor
