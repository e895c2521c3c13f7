// Which names that a server sends may become local files and folders, and how they are shown.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "engine/mCreatePath.h"
#include "platform/files/LocalPath.h"

namespace quillmoor {

/// Why a listed name is refused, as part of a sentence; nothing when it may be used. A name that passes stays
/// within the folder it is put into and is a plain file there.
std::optional<std::string> ListedNameRefusal(std::string_view name, LocalNameRules rules = kLocalNameRules);

/// The same for a path as a server reports it, component by component, and for what LocalFolderFor makes of
/// it: FolderNames::cut can turn "/.[x]." or "/.. " into "/..". "/" alone passes.
std::optional<std::string> RemotePathRefusal(std::string_view path, LocalNameRules rules = kLocalNameRules,
                                             FolderNames names = FolderNames::cut);

/// RemotePathRefusal and whether the local folder of `currentDir` lies at or below that of the remote root:
/// a bracket left open in `target` can be closed by the server, which cuts the end of `target` away.
std::optional<std::string> LocalFolderRefusal(const std::string& target, const std::string& currentDir,
                                              LocalNameRules rules = kLocalNameRules,
                                              FolderNames names = FolderNames::cut);

/// PrintableText: a name cannot break a log line or talk to a terminal.
std::string PrintableName(std::string_view name);

}  // namespace quillmoor
