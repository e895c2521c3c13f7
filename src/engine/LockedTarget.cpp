#include "engine/LockedTarget.h"

#include <filesystem>
#include <system_error>

#include "engine/mCreatePath.h"
#include "platform/files/Files.h"
#include "platform/files/LocalPath.h"

namespace quillmoor {
namespace {

bool isWantOfRights(const std::error_code& error) {
  return error == std::errc::permission_denied || error == std::errc::operation_not_permitted ||
         error == std::errc::read_only_file_system;
}

std::string keyOf(const std::string& folder) {
  std::error_code failed;
  std::filesystem::path path = std::filesystem::weakly_canonical(LocalPath(folder), failed);
  if (failed) path = LocalPath(folder).lexically_normal();
  std::string key = LocalNameKey(LocalPathText(path));
  if (!key.ends_with(kLocalSeparator)) key += kLocalSeparator;
  return key;
}

}  // namespace

bool LockedTarget::acquire(const std::string& folder) {
  for (std::filesystem::path level = LocalPath(folder); !pathExists(LocalPathText(level));) {
    if (level.has_filename()) created_.push_back(LocalPathText(level));
    const std::filesystem::path parent = level.parent_path();
    if (parent.empty() || parent == level) break;
    level = parent;
  }
  const bool there = CreatePath(folder);
  key_ = keyOf(folder);
  if (!there) return true;
  try {
    lock_ = TargetLock::acquire(folder);
    return lock_ != nullptr;
  } catch (const std::system_error& error) {
    if (!isWantOfRights(error.code())) throw;
    return true;
  }
}

bool LockedTarget::contains(const LockedTarget& other) const {
  return other.key_.starts_with(key_);
}

void LockedTarget::releaseUnused() {
  lock_.reset();
  for (const std::string& folder : created_) removeFolder(folder);
}

}  // namespace quillmoor
