// A file that appears whole or not at all: written under a temporary name beside its target, then renamed.
#pragma once

#include <filesystem>
#include <string_view>

#include "platform/files/TemporaryFile.h"

namespace quillmoor {

/// Writes one file. Until `commit` the target keeps what it held, whatever happens to the process.
/// Errors are raised as std::system_error whose text names the file.
class WholeFile {
 public:
  /// How much `commit` promises. `process`: the target is whole if the program is killed. `power`: also if
  /// the machine loses power (the data is flushed to the disk first, which costs milliseconds).
  enum class Survives { process, power };

  /// Who may read a new file. `owner`: nobody else, for files that hold passwords; one that replaces a file
  /// then keeps that file's permissions, and a link stays a link to what is replaced. On Windows the
  /// permissions of a new file are those that its folder hands down.
  enum class Readers { everyone, owner };

  /// Creates the temporary file in the folder of `target`, which must exist. It is removed at the end unless
  /// it was committed.
  explicit WholeFile(std::filesystem::path target, Survives survives = Survives::process,
                     Readers readers = Readers::everyone);
  WholeFile(const WholeFile&) = delete;
  WholeFile& operator=(const WholeFile&) = delete;

  void write(std::string_view bytes);

  /// Gives the file its final name, replacing what stood there. Nothing may be written afterwards.
  void commit();

 private:
  std::filesystem::path target_;
  TemporaryFile file_;
  Survives survives_;
  Readers readers_;
};

}  // namespace quillmoor
