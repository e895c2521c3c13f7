// Reads and replaces the profile file as a whole.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/files/AtomicFile.h"

namespace quillmoor {

/// The bytes of the file; "" when it is missing, nullopt when it cannot be read or is larger than 64 MiB.
std::optional<std::string> ReadProfileFile(const std::string& file);

/// Replaces the file's contents `before` by `after`, readable by the user only (see PrivateFile.h); writes
/// nothing when they are equal. False when it cannot be written; it is then unchanged.
bool WriteProfileFile(const std::string& file, std::string_view before, std::string_view after,
                      AtomicFile::Survives survives = AtomicFile::Survives::process);

}  // namespace quillmoor
