// What the desktop starts when the user logs in (XDG autostart).
#pragma once

#include <string>

namespace quillmoor {

/// Writes autostart/NAME.desktop in the user's configuration folder, for a program given by its path. Raises
/// std::exception when it cannot be written.
void WriteAutostartEntry(const std::string& name, const std::string& program);

/// A missing entry is no failure.
void RemoveAutostartEntry(const std::string& name);

}  // namespace quillmoor
