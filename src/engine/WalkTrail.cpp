#include "engine/WalkTrail.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace quillmoor {

bool WalkTrail::contains(std::string_view path) const {
  return std::any_of(levels_.begin(), levels_.end(), [&](const Folder& level) { return level.path == path; });
}

WalkTrail::Level::Level(WalkTrail& trail, std::string path, std::string_view listing) : trail_(trail) {
  Folder folder{std::move(path), listing.size(), std::hash<std::string_view>{}(listing)};
  // All empty folders have the same listing.
  if (!listing.empty()) {
    folder.same = static_cast<std::size_t>(
        std::count_if(trail_.levels_.begin(), trail_.levels_.end(), [&](const Folder& above) {
          return above.listingSize == folder.listingSize && above.listingHash == folder.listingHash;
        }));
  }
  if (folder.same != 0) folder.repeats = trail_.levels_.back().repeats + 1;
  trail_.levels_.push_back(std::move(folder));
}

}  // namespace quillmoor
