// Local folders of a backup: how their paths are made from remote ones, and how they are created.
#pragma once

#include <functional>
#include <string>

#include "platform/LocalPath.h"

namespace quillmoor {

/// Cuts the text from the first "[" to the first "]" out of a path that holds both, trims blanks, and makes
/// sure that the path ends in its separator: "/" for a remote path, the platform's for a local one.
std::string AddTrailingSeparator(const std::string& path, bool remote = false,
                                 char localSeparator = kLocalSeparator);

/// Local folder that mirrors the remote folder `currentDir` below `target`, with a separator at its end.
/// Doubled separators become single ones in one pass, also the two that begin a network path.
std::string LocalFolderFor(const std::string& target, const std::string& currentDir,
                           char localSeparator = kLocalSeparator);

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
