// Which files and folders an archive shall hold, one after the other, always in the same order: byte by byte
// by name, a folder before what it holds.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/files/ArchiveFiles.h"

namespace quillmoor::zip {

/// A folder (with its separator at the end) and a pattern for names in it.
struct WildcardPath {
  std::string folder;
  std::string names;
};

/// Takes "folder/*" apart; nothing when there is no folder or no pattern in it. A path without separator is a
/// pattern in the present folder.
std::optional<WildcardPath> splitWildcardPath(std::string_view pattern);

/// "*" any text, "?" any one character (byte of a name that is not ASCII: any of its bytes). Without regard
/// to case where the platform's names have none (ASCII letters only).
bool matchesWildcard(std::string_view pattern, std::string_view name);

class Walk {
 public:
  struct Item {
    std::string path;
    std::string name;  ///< in the archive; a folder's ends in "/"
    bool folder = false;
  };
  using Excluded = std::function<bool(const std::string& folder, std::string_view name)>;
  using OnError = std::function<void(const std::string& description)>;

  /// Reads the folder itself; raises std::system_error when it cannot. `excluded` is asked for every file,
  /// `onError` told what is left out: links, special files, sub-folders that cannot be read. What bears a
  /// reserved name (see IsReservedLocalName) is left out without a word.
  Walk(WildcardPath what, bool recurse, Excluded excluded, OnError onError);

  /// Nothing at the end.
  std::optional<Item> next();

 private:
  /// A folder whose items are being given out. A large one is kept in few pieces of memory: the names in one
  /// text.
  struct Level {
    std::string folder;  ///< with separator
    std::string prefix;  ///< of names in the archive
    std::string text;    ///< kind and name, each ended by NUL
    std::vector<std::uint32_t> starts;
    std::size_t at = 0;
  };

  void enter(const std::string& path, std::string folder, std::string prefix, bool mayBeLink);

  std::string names_;
  bool recurse_;
  Excluded excluded_;
  OnError onError_;
  std::vector<Level> levels_;
};

}  // namespace quillmoor::zip
