// Entries that the desktop starts when the user logs in (XDG autostart).
#pragma once

#include <string>

namespace quillmoor {

/// Writes autostart/NAME.desktop in the user's configuration folder, for a program given by its path, unless
/// it is already up to date. Raises std::exception when it cannot be written.
void WriteAutostartEntry(const std::string& name, const std::string& program);

/// A missing entry is no error. Raises std::exception when it cannot be removed.
void RemoveAutostartEntry(const std::string& name);

}  // namespace quillmoor
