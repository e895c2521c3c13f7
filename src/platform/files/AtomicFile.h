// A file that appears whole or not at all: written under a temporary name beside its target, then renamed.
// The one way in which single files are written.
#pragma once

#include <string>
#include <string_view>

#include "platform/files/Files.h"

namespace quillmoor {

/// Writes one file. Until `commit` the target keeps what it held, whatever happens to the process, and the
/// new file is locked against RemoveStaleTemporaries of every process. Errors are raised as std::system_error
/// whose text names the file.
class AtomicFile : private OpenFile {
 public:
  /// What `commit` promises. `process`: the target is whole if the program is killed. `power`: also if the
  /// machine loses power (the data is flushed to the disk first, which costs milliseconds).
  enum class Survives { process, power };

  /// Who may read a new file. `owner`: nobody else, for files that hold passwords; it then keeps the
  /// permissions of a file that it replaces, and a link stays a link to the new file. On Windows a new file
  /// inherits the permissions of its folder.
  enum class Readers { everyone, owner };

  /// Creates the temporary file in the folder of `target`, which must exist.
  explicit AtomicFile(const std::string& target, Survives survives = Survives::process,
                      Readers readers = Readers::everyone);
  /// Removes the file unless it was committed.
  ~AtomicFile();

  void write(std::string_view bytes);

  /// Ends the writing, and raises what the system reports only then (a full disk of a share). What is set at
  /// `temporaryPath` afterwards, a time for example, is not undone by a late write.
  void finishWriting();
  const std::string& temporaryPath() const { return path_; }

  /// Renames the file into place, replacing a file that is there. Nothing may be written afterwards.
  void commit();

 private:
  /// False when another file has the name, or a sweep has the new file.
  bool create();

  std::string target_;
  Survives survives_;
  Readers readers_;
  bool writing_ = true;
  bool renamed_ = false;
};

/// For RemoveStaleTemporaries: removes a file that no writer has open. Where the file system has no locks, or
/// the user may not open the file, removes it when it is older than `kStaleSeconds`.
void RemoveUnheldFile(const std::string& path);
inline constexpr std::int64_t kStaleSeconds = 24 * 60 * 60;

}  // namespace quillmoor
