// Local folders of a backup: derives their paths from remote ones and creates them.
#pragma once

#include <functional>
#include <string>

#include "platform/files/LocalPath.h"

namespace quillmoor {

/// How a folder's path is changed (setting NamesAsListed). `cut`: the text from the first "[" to the first
/// "]" is removed if that comes after it, blanks around the path are trimmed, and a network path loses one of
/// its two leading separators. `asListed`: none of this.
enum class FolderNames { cut, asListed };

/// The path, changed as `names` says, with a trailing separator: "/" for a remote path, `localSeparator` for
/// a local one.
std::string AddTrailingSeparator(const std::string& path, bool remote = false,
                                 char localSeparator = kLocalSeparator, FolderNames names = FolderNames::cut);

/// The local folder below `target` that mirrors the remote folder `currentDir`, with a trailing separator.
/// Doubled separators become single in one pass; for those that begin a network path see FolderNames.
std::string LocalFolderFor(const std::string& target, const std::string& currentDir,
                           char localSeparator = kLocalSeparator, FolderNames names = FolderNames::cut);

/// Creates a folder and all its missing parents. True when it exists afterwards; levels created before a
/// failure stay. False for "".
bool CreatePath(const std::string& path);

/// The file system operations of CreatePath.
struct FolderSystem {
  std::function<bool(const std::string&)> exists;
  std::function<bool(const std::string&)> create;
};
bool CreatePath(const std::string& path, char separator, const FolderSystem& system);

}  // namespace quillmoor
