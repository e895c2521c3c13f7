#include "platform/system/posix/UserFolders.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

namespace quillmoor {

std::filesystem::path UserConfigurationFolder() {
  // XDG Base Directory: a relative path must be ignored.
  const char* const configured = std::getenv("XDG_CONFIG_HOME");
  if (configured && configured[0] == '/') return configured;
  const char* home = std::getenv("HOME");
  if (!home || home[0] != '/') {
    const passwd* const user = ::getpwuid(::getuid());
    home = user ? user->pw_dir : nullptr;
  }
  if (!home || home[0] != '/') throw std::runtime_error("The user has no home folder for the settings.");
  return std::filesystem::path(home) / ".config";
}

}  // namespace quillmoor
