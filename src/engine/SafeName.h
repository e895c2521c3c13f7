// Which names from a server may become local files and folders, and how they are displayed.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "engine/mCreatePath.h"
#include "platform/files/LocalPath.h"

namespace quillmoor {

/// Why a listed name is refused, as part of a sentence; nothing when it may be used. An accepted name stays
/// within its folder and is a plain file there.
std::optional<std::string> ListedNameRefusal(std::string_view name, LocalNameRules rules = kLocalNameRules);

/// The same for each component of a path reported by a server, and for the result of LocalFolderFor:
/// FolderNames::cut can turn "/.[x]." or "/.. " into "/..". "/" alone is accepted.
std::optional<std::string> RemotePathRefusal(std::string_view path, LocalNameRules rules = kLocalNameRules,
                                             FolderNames names = FolderNames::cut);

/// RemotePathRefusal, and whether the local folder of `currentDir` is the remote root's or below it: a path
/// from the server can close a bracket left open in `target`, and so cut off the end of `target`.
std::optional<std::string> LocalFolderRefusal(const std::string& target, const std::string& currentDir,
                                              LocalNameRules rules = kLocalNameRules,
                                              FolderNames names = FolderNames::cut);

/// PrintableText: a name cannot break a log line or control a terminal.
std::string PrintableName(std::string_view name);

}  // namespace quillmoor
