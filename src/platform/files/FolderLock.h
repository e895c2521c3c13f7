// The lock that allows one writer at a time in a folder, across programs (on Windows: of one session).
#pragma once

#include <cstdint>
#include <filesystem>

namespace quillmoor {

/// Waits for the folder's lock and holds it for its lifetime. Raises std::system_error when there is no such
/// folder. A thread must not acquire it twice.
class FolderLock {
 public:
  explicit FolderLock(const std::filesystem::path& folder);
  ~FolderLock();
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

 private:
  std::intptr_t handle_;
};

}  // namespace quillmoor
