#include "platform/files/WorkFolder.h"

#include <system_error>
#include <vector>

#include "platform/files/ArchiveFiles.h"
#include "platform/files/LocalFiles.h"
#include "platform/files/LocalPath.h"
#include "platform/files/ReservedNames.h"
#include "platform/files/TemporaryFile.h"

namespace quillmoor {
namespace {

constexpr int kMostAttempts = 1000;

/// Removes the files in the folder, and the folder. The lock file goes with its lock.
void removeAll(const std::string& folder, std::unique_ptr<TargetLock> lock) {
  std::vector<std::string> names;
  readFolder(folder, false, [&](const std::string& name, FileKind kind) {
    if (kind == FileKind::file && name != kLockFileName) names.push_back(name);
  });
  for (const std::string& name : names) removeFile(folder + kLocalSeparator + name);
  lock.reset();
  RemoveLocalFile(folder);
}

bool isAllLongUnchanged(const std::string& folder) {
  bool unchanged = IsLongUnchanged(folder);
  readFolder(folder, false, [&](const std::string& name, FileKind) {
    unchanged = unchanged && (name == kLockFileName || IsLongUnchanged(folder + kLocalSeparator + name));
  });
  return unchanged;
}

void removeUnheldFolder(const std::string& path) {
  std::unique_ptr<TargetLock> lock = TargetLock::acquire(path);
  if (lock && (lock->enforced() || isAllLongUnchanged(path))) removeAll(path, std::move(lock));
}

}  // namespace

WorkFolder::WorkFolder(const std::string& parent) {
  for (int attempt = 1; !lock_; ++attempt) {
    path_ = parent + NewTemporaryName();
    createFolder(path_);
    try {
      lock_ = TargetLock::acquire(path_);  // null when a sweep is about to remove the folder
    } catch (const std::system_error&) {
      // A sweep may have removed the folder before it was locked.
      if (attempt < kMostAttempts && !LocalFolderExists(path_)) continue;
      RemoveLocalFile(path_);
      throw;
    }
  }
}

WorkFolder::~WorkFolder() {
  try {
    removeAll(path_, std::move(lock_));
  } catch (const std::exception&) {
    // The next sweep removes it.
  }
}

std::string WorkFolder::file(std::size_t number) const {
  return path_ + kLocalSeparator + std::to_string(number);
}

void RemoveStaleTemporaries(const std::string& folder) {
  const bool ended = folder.empty() || folder.back() == kLocalSeparator;
  const std::string start = ended ? folder : folder + kLocalSeparator;
  for (const std::string& name : ReservedNamesIn(folder)) {
    if (!IsTemporaryName(name)) continue;
    try {
      const std::string path = start + name;
      const std::optional<FileKind> kind = pathKind(path);
      if (kind == FileKind::file) RemoveUnheldFile(path);
      if (kind == FileKind::folder) removeUnheldFolder(path);
    } catch (const std::system_error&) {
      // The next sweep comes to it again.
    }
  }
}

}  // namespace quillmoor
