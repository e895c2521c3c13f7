// Times of a file, as the system keeps them.
#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace quillmoor {

/// In UTC, to the second. A system that keeps no creation time gives the time of the last change in its
/// place.
struct FileTimes {
  std::chrono::sys_seconds created, accessed, modified;
};

/// Opens the file for reading and sharing; nothing when that fails or it is a folder.
std::optional<FileTimes> ReadFileTimes(const std::string& path);

/// Sets the time of the last change alone. The file is opened for writing, so a folder or a file that may not
/// be written keeps its time and the answer is false.
bool WriteModifiedTime(const std::string& path, std::chrono::sys_seconds modified);

}  // namespace quillmoor
