// The folders in which a user's programs keep what is theirs (XDG Base Directory).
#pragma once

#include <filesystem>

namespace quillmoor {

/// $XDG_CONFIG_HOME, else ~/.config. Raises std::runtime_error when neither is known.
std::filesystem::path UserConfigurationFolder();

}  // namespace quillmoor
