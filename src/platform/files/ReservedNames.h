// The names of what the program keeps beside a user's files for a while: files being written, folders in
// which a former set waits, locks.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillmoor {

/// True for every name of that kind, in upper or lower case, since some disks ignore case. Nothing else may
/// be written under such a name: it could be replaced or removed at any moment.
bool IsReservedLocalName(std::string_view name);

/// A name for a file or folder being written, which no other call in any process returns:
/// ".quillmoor-unfinished-", a random number of the process, a counter, ".tmp".
std::string NewTemporaryName();

/// True for the names of NewTemporaryName, and for those that earlier versions used.
bool IsTemporaryName(std::string_view name);

/// The folder in which the former files of a set wait during an exchange; `mainName` is the name of the set's
/// main file.
std::string WaitingFolderName(std::string_view mainName);
/// The reverse; nothing for any other name.
std::optional<std::string> SetOfWaitingFolder(std::string_view name);

/// The lock file inside a folder (see TargetLock).
inline constexpr const char* kLockFileName = ".quillmoor-lock";

}  // namespace quillmoor
