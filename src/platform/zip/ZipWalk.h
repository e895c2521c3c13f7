// Finds the files and folders to pack, always in the same order: sorted bytewise by name, a folder before its
// contents.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/files/Files.h"

namespace quillmoor::zip {

/// A folder (with a trailing separator) and a pattern for names in it.
struct WildcardPath {
  std::string folder;
  std::string names;
};

/// Splits "folder/*"; nullopt without a pattern. A path without separator is a pattern in the current folder.
std::optional<WildcardPath> splitWildcardPath(std::string_view pattern);

/// "*" matches any text, "?" any one byte. Ignores the case of ASCII letters where the platform's file names
/// do.
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

  /// Reads the folder itself; raises std::system_error when that fails. Calls `excluded` for every file, and
  /// `onError` for what is skipped: links, special files, sub-folders that cannot be read. Reserved names
  /// (see IsReservedLocalName) are skipped silently.
  Walk(WildcardPath what, bool recurse, Excluded excluded, OnError onError);

  /// The next item; nullopt at the end.
  std::optional<Item> next();

 private:
  /// A folder whose items are being returned. The names share one string, so that a large folder needs few
  /// allocations.
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
