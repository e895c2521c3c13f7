// The profile file as a whole: read at once, replaced at once.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/files/WholeFile.h"

namespace quillmoor {

/// The bytes of the file; "" for a missing one, nothing for one that cannot be read or is larger than 64 MiB.
std::optional<std::string> ReadProfileFile(const std::string& file);

/// Replaces the file, which holds `before`, by `after`, readable by the user alone (see PrivateFile.h);
/// writes nothing when they are the same. False when the user may not write it; it is then as before.
bool WriteProfileFile(const std::string& file, std::string_view before, std::string_view after,
                      WholeFile::Survives survives = WholeFile::Survives::process);

}  // namespace quillmoor
