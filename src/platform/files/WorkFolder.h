// The folder where the files of a set are written before they are renamed into place together; and the
// removal of everything unfinished that killed processes left behind.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "platform/files/TargetLock.h"

namespace quillmoor {

/// A hidden folder with a unique name, created in the folder of the targets so that files can be renamed from
/// one to the other. Locked against RemoveStaleTemporaries.
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

/// The reserved names (see IsReservedLocalName) in a folder, in no order; empty where it cannot be read.
std::vector<std::string> ReservedNamesIn(const std::string& folder);

/// Removes the temporary files and work folders in `folder` that ended processes left behind. Those that a
/// living process of any user is writing stay; where the file system has no locks, or a file may not be
/// opened, those changed within the last day. Reads the folder once. Raises nothing: what cannot be removed
/// stays.
void RemoveStaleTemporaries(const std::string& folder);

}  // namespace quillmoor
