// Decides which entry names may become files: an archive may come from anybody.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/files/LocalPath.h"

namespace quillmoor::sfx {

/// Splits an entry's name at "/", folders first. Nullopt when a part would leave the target folder, has a
/// special meaning to the system, or holds terminal control characters.
std::optional<std::vector<std::string>> partsOf(std::string_view entryName,
                                                LocalNameRules rules = kLocalNameRules);

}  // namespace quillmoor::sfx
