// The folders on the way down to the one being walked, by which a tree without an end is recognised.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quillmoor {

class WalkTrail {
 public:
  /// A link to a folder above, shown as a folder, gives each level a path of its own. So many levels in a row
  /// that list just what a folder above them lists are a loop, and so is a listing that stands above so
  /// often, with others in between.
  static constexpr std::size_t kLoopLevels = 3;

  std::size_t depth() const { return levels_.size(); }
  bool holds(std::string_view path) const;

  /// One folder being walked, for as long as this lives.
  class Level {
   public:
    Level(WalkTrail& trail, std::string path, std::string_view listing);
    ~Level() { trail_.levels_.pop_back(); }
    Level(const Level&) = delete;
    Level& operator=(const Level&) = delete;

    /// The folder ends a loop and must not be walked.
    bool loops() const {
      const Folder& last = trail_.levels_.back();
      return last.repeats >= kLoopLevels || last.same >= kLoopLevels;
    }

   private:
    WalkTrail& trail_;
  };

 private:
  struct Folder {
    std::string path;
    std::size_t listingSize = 0;
    std::size_t listingHash = 0;
    std::size_t same = 0;     // levels above that list the same
    std::size_t repeats = 0;  // levels in a row, this one the last, that list what one above them lists
  };
  std::vector<Folder> levels_;
};

}  // namespace quillmoor
