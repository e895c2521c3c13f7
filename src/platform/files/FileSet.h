// The last step of a set of files that is worth something only as a whole: their names, in exchange for those
// of a former set.
#pragma once

#include <string>
#include <vector>

namespace quillmoor {

/// A finished file under its temporary name, and the name that it shall have, on the same disk.
struct SetFile {
  std::string temporary, name;
};

/// Gives the files their names, which are in one folder; that of the main file, the last, at the end: where
/// it stands, the set is whole. A single file replaces what stood there in one step. Of a former set
/// everything that is in the way is first moved into a folder beside it (".quillmoor-unfinished-" and the
/// main file's name), and removed when all is done. The folder is locked meanwhile; an exchange of the same
/// set by another process is waited for, ten seconds at most.
///
/// Raises std::system_error, whose text names the file, when one cannot have its name; everything that was
/// moved is put back then, and of the new files those that had their names already are removed.
void giveSetItsNames(const std::vector<SetFile>& files);

/// For a program that was killed in between: puts the former set of that main file back, or takes it away
/// where the new one is complete. Of a new set that is not, the files that had their names already are
/// removed. Does nothing while a living process exchanges that set. Raises std::system_error when something
/// cannot be put back; the rest of the set waits on.
void endKilledExchange(const std::string& mainName);

/// endKilledExchange for every set of the folder, and RemoveStaleTemporaries. Nothing happens when there is
/// no such folder. Raises std::runtime_error after all were tried, whose text names each file that could not
/// be put back.
void EndKilledExchanges(const std::string& folder);

}  // namespace quillmoor
