// Where the files of a set are written before they get their names together; and the removal of everything
// unfinished that a killed process has left.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "platform/files/TargetLock.h"

namespace quillmoor {

/// A hidden folder of a name that no other has, created in the folder where the files shall have their names,
/// so that they can be renamed from here to there. Locked against RemoveStaleTemporaries.
class WorkFolder {
 public:
  /// `parent` must exist; it ends with a separator, or is empty for the current folder. Raises
  /// std::system_error when nothing can be created there.
  explicit WorkFolder(const std::string& parent);
  /// Removes the folder with the files that are still in it.
  ~WorkFolder();
  WorkFolder(const WorkFolder&) = delete;
  WorkFolder& operator=(const WorkFolder&) = delete;

  /// The path of a file in it; nothing is created.
  std::string file(std::size_t number) const;

 private:
  std::string path_;
  std::unique_ptr<TargetLock> lock_;
};

/// Removes the temporary files and work folders in `folder` whose writers are no more. Those that a living
/// process, of whatever user, is writing are left; where the file system has no locks, and for what may not
/// be opened, that is what was changed within a day. One look into the folder; raises nothing: what cannot be
/// removed stays.
void RemoveStaleTemporaries(const std::string& folder);

}  // namespace quillmoor
