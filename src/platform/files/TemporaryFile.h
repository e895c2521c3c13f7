// A file under a temporary name, before it gets its own: the one way in which single files are written. And
// the removal of those that a killed process has left.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quillmoor {

/// A new file in a folder, that no other writer has and no link leads away from. As long as it has not its
/// final name, it is locked against RemoveStaleTemporaries, in whatever process that runs. Paths are texts as
/// LocalPath reads them. Errors are raised as std::system_error whose text names the file.
class TemporaryFile {
 public:
  /// `folder`: ends with a separator, or is empty for the current one. `permissions`: those of a POSIX system
  /// that the user's umask cuts down; not used elsewhere.
  explicit TemporaryFile(const std::string& folder, unsigned permissions = 0666);
  /// Removes the file unless it was renamed.
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  void write(std::string_view bytes);
  /// Returns when the disk has the bytes.
  void flushToDisk();
  /// Ends the writing, and raises what the system reports only then (a full disk that is far away). What is
  /// set at `path()` afterwards, a time for example, is not undone by a write that was still under way.
  void finishWriting();

  struct Renaming {
    bool throughToDisk = false;    ///< returns when the disk has the name too, where the system can tell
    bool keepPermissions = false;  ///< of a file that is replaced
  };
  /// Gives the file its final name, replacing a file that stood there, and ends the writing.
  void renameTo(const std::string& target, Renaming how);

  const std::string& path() const { return path_; }

 private:
  std::string path_;
  std::intptr_t handle_ = -1;
  bool writing_ = true;
  bool renamed_ = false;
};

// --- for RemoveStaleTemporaries

/// The reserved names (see IsReservedLocalName) in a folder, in no order; empty where it cannot be read.
std::vector<std::string> ReservedNamesIn(const std::string& folder);

/// Removes a file that no writer has open. Where the file system has no locks, or the user may not open the
/// file, one that nobody has changed for a day.
void RemoveUnheldFile(const std::string& path);

/// True for what nobody has changed for a day.
bool IsLongUnchanged(const std::string& path);

}  // namespace quillmoor
