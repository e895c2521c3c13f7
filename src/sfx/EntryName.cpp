#include "sfx/EntryName.h"

#include "engine/SafeName.h"

namespace quillmoor::sfx {

std::optional<std::vector<std::string>> partsOf(std::string_view entryName, LocalNameRules rules) {
  if (entryName.ends_with('/')) entryName.remove_suffix(1);
  std::vector<std::string> parts;
  for (;;) {
    const std::size_t end = entryName.find('/');
    const std::string_view part = entryName.substr(0, end);
    // The same rules as for names in a server's listing; an absolute path begins with an empty part.
    if (ListedNameRefusal(part, rules)) return std::nullopt;
    parts.emplace_back(part);
    if (end == std::string_view::npos) return parts;
    entryName.remove_prefix(end + 1);
  }
}

}  // namespace quillmoor::sfx
