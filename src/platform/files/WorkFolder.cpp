#include "platform/files/WorkFolder.h"

#include <ctime>
#include <system_error>

#include "platform/files/AtomicFile.h"
#include "platform/files/LocalPath.h"
#include "platform/files/ReservedNames.h"

namespace quillmoor {
namespace {

constexpr int kMostAttempts = 1000;

/// Removes the files in the folder, and the folder. Releasing the lock removes the lock file.
void removeAll(const std::string& folder, std::unique_ptr<TargetLock> lock) {
  std::vector<std::string> names;
  readFolder(folder, false, [&](const std::string& name, FileKind kind) {
    if (kind == FileKind::file && name != kLockFileName) names.push_back(name);
  });
  for (const std::string& name : names) removeFile(PathIn(folder, name));
  lock.reset();
  removeFolder(folder);
}

bool isStale(const std::string& path) {
  return std::time(nullptr) - fileState(path).modifiedSeconds > kStaleSeconds;
}

bool isAllStale(const std::string& folder) {
  bool stale = isStale(folder);
  readFolder(folder, false, [&](const std::string& name, FileKind) {
    stale = stale && (name == kLockFileName || isStale(PathIn(folder, name)));
  });
  return stale;
}

void removeUnheldFolder(const std::string& path) {
  std::unique_ptr<TargetLock> lock = TargetLock::acquire(path);
  if (lock && (lock->enforced() || isAllStale(path))) removeAll(path, std::move(lock));
}

}  // namespace

WorkFolder::WorkFolder(const std::string& parent) {
  for (int attempt = 1; !lock_; ++attempt) {
    path_ = parent + NewTemporaryName();
    if (const std::error_code error = createFolder(path_))
      throw std::system_error(error, "cannot create " + path_);
    try {
      lock_ = TargetLock::acquire(path_);  // null when a sweep is about to remove the folder
    } catch (const std::system_error&) {
      // A sweep may have removed the folder before it was locked.
      if (attempt < kMostAttempts && !folderExists(path_)) continue;
      removeFolder(path_);
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
  return PathIn(path_, std::to_string(number));
}

std::vector<std::string> ReservedNamesIn(const std::string& folder) {
  std::vector<std::string> names;
  try {
    readFolder(folder.empty() ? "." : folder, true, [&](const std::string& name, FileKind) {
      if (IsReservedLocalName(name)) names.push_back(name);
    });
  } catch (const std::system_error&) {
    // Returns what could be read.
  }
  return names;
}

void RemoveStaleTemporaries(const std::string& folder) {
  for (const std::string& name : ReservedNamesIn(folder)) {
    if (!IsTemporaryName(name)) continue;
    try {
      const std::string path = PathIn(folder, name);
      const std::optional<FileKind> kind = pathKind(path);
      if (kind == FileKind::file) RemoveUnheldFile(path);
      if (kind == FileKind::folder) removeUnheldFolder(path);
    } catch (const std::system_error&) {
      // The next sweep tries again.
    }
  }
}

}  // namespace quillmoor
