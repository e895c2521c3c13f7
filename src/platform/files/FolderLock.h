// One writer at a time in a folder, across programs (on Windows: those of one session).
#pragma once

#include <cstdint>
#include <filesystem>

namespace quillmoor {

/// Waits until nobody else holds the folder's lock and holds it while this lives. The folder must exist;
/// raises std::system_error otherwise. Not to be taken twice by one thread.
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
