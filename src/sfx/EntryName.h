// Which names of an archive may become files: an archive may come from anybody.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/files/LocalPath.h"

namespace quillmoor::sfx {

/// The parts of an entry's name, folders first, "/" cut off. A part that would lead out of the folder that is
/// unpacked into, that the system reads as something else than a name, or that would talk to the terminal,
/// makes it nothing.
std::optional<std::vector<std::string>> partsOf(std::string_view entryName,
                                                LocalNameRules rules = kLocalNameRules);

}  // namespace quillmoor::sfx
