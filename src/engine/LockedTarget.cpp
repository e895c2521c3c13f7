#include "engine/LockedTarget.h"

#include "engine/mCreatePath.h"
#include "platform/LocalFiles.h"

namespace quillmoor {

bool LockedTarget::acquire(const std::string& folder) {
  if (!LocalFolderExists(folder)) {
    if (!CreatePath(folder)) return true;
    created_ = folder;
  }
  lock_ = TargetLock::acquire(folder);
  return lock_ != nullptr;
}

void LockedTarget::releaseUnused() {
  lock_.reset();
  if (!created_.empty()) RemoveLocalFile(created_);
}

}  // namespace quillmoor
