// The last step of a set of files that is worth something only as a whole: their names, in exchange for those
// of a former set.
#pragma once

#include <string>
#include <vector>

namespace quillmoor {

/// A finished file under its temporary name, and the name that it shall have, in the same folder.
struct SetFile {
  std::string temporary, name;
};

/// Gives the files their names, that of the main file, the last, at the end: where it stands, the set is
/// whole. A single file replaces what stood there in one step. Of a former set everything that is in the way
/// is first moved into a folder beside it (".quillmoor-unfinished-" and the main file's name), and removed
/// when all is done.
///
/// Raises std::system_error, whose text names the file, when one cannot have its name; everything that was
/// moved is put back then, and of the new files those that had their names already are removed.
void giveSetItsNames(const std::vector<SetFile>& files);

/// For a program that was killed in between: puts the former set of that main file back, or takes it away
/// where the new one is complete. Raises std::system_error when it cannot be put back.
void endKilledExchange(const std::string& mainName);

}  // namespace quillmoor
