// Local folders of a backup: how their paths are made from remote ones, and how they are created.
#pragma once

#include <functional>
#include <string>

#include "platform/files/LocalPath.h"

namespace quillmoor {

/// What becomes of the names in a folder's path (setting NamesAsListed). `cut`: the text from the first "["
/// to the first "]" of a path that holds both is cut out, the blanks around the path are trimmed, and a
/// network path loses one of the two separators that begin it. `asListed`: none of that.
enum class FolderNames { cut, asListed };

/// The path, treated as `names` says, with its separator at the end: "/" for a remote path, the platform's
/// for a local one.
std::string AddTrailingSeparator(const std::string& path, bool remote = false,
                                 char localSeparator = kLocalSeparator, FolderNames names = FolderNames::cut);

/// Local folder that mirrors the remote folder `currentDir` below `target`, with a separator at its end.
/// Doubled separators become single ones in one pass; for those that begin a network path see FolderNames.
std::string LocalFolderFor(const std::string& target, const std::string& currentDir,
                           char localSeparator = kLocalSeparator, FolderNames names = FolderNames::cut);

/// Creates a folder and all its missing parents. True when it exists afterwards; levels made before a failure
/// stay. "" is false.
bool CreatePath(const std::string& path);

/// What CreatePath does to the file system.
struct FolderSystem {
  std::function<bool(const std::string&)> exists;
  std::function<bool(const std::string&)> create;
};
bool CreatePath(const std::string& path, char separator, const FolderSystem& system);

}  // namespace quillmoor
