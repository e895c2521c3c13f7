// Sets of files that are worth something only as a whole: renaming them into place, in exchange for a former
// set.
#pragma once

#include <string>
#include <vector>

namespace quillmoor {

/// A finished file under its temporary name, and its final name, on the same disk.
struct SetFile {
  std::string temporary, name;
};

/// Renames the files into place, all in one folder, the main file, which is the last of the list, at the end:
/// where that exists, the set is whole. A single file replaces a former one in one step. Files of a former
/// set are first moved into a folder beside it (".quillmoor-unfinished-" and the main file's name), and
/// removed when all is done. That folder is locked meanwhile; waits ten seconds at most for an exchange of
/// the same set by another process.
///
/// Raises std::system_error, whose text names the file, when one cannot be renamed; then moves the former set
/// back and removes the new files that were renamed already.
void renameSetIntoPlace(const std::vector<SetFile>& files);

/// Ends an exchange whose process was killed: removes the former set of that main file where the new one is
/// complete; else moves it back and removes the new files that were renamed already. Does nothing while a
/// living process exchanges that set. Raises std::system_error when a file cannot be moved back; the rest of
/// the set then waits for the next call.
void endKilledExchange(const std::string& mainName);

/// endKilledExchange for every set of the folder, and RemoveStaleTemporaries. The folder may be missing.
/// Raises std::runtime_error after all were tried, whose text names each file that could not be moved back.
void EndKilledExchanges(const std::string& folder);

}  // namespace quillmoor
