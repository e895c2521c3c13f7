// The folders from the root down to the one being walked, by which an endless tree is detected.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quillmoor {

class WalkTrail {
 public:
  /// A link to a parent folder that is listed as a folder gives each level a new path. This many consecutive
  /// levels that have the same listing as a folder above them are a loop; so is a level whose listing occurs
  /// this often above it.
  static constexpr std::size_t kLoopLevels = 3;

  std::size_t depth() const { return levels_.size(); }
  bool contains(std::string_view path) const;

  /// One folder that is being walked during the lifetime of this object.
  class Level {
   public:
    Level(WalkTrail& trail, std::string path, std::string_view listing);
    ~Level() { trail_.levels_.pop_back(); }
    Level(const Level&) = delete;
    Level& operator=(const Level&) = delete;

    /// Whether the folder closes a loop and must not be walked.
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
    std::size_t same = 0;     // levels above with the same listing
    std::size_t repeats = 0;  // consecutive levels, ending with this one, that repeat a listing above them
  };
  std::vector<Folder> levels_;
};

}  // namespace quillmoor
