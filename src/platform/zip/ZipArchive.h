// The zip archive: packs folders into one file, plain or self-extracting, whole or in segments, with a
// password or without. Blocks while it pumps.
//
// Format: PKWARE zip application note 6.3 (§4.3 records, §4.5.3 zip64, §8 split archives, appendix D names)
// and the AE-2 encryption that the common tools share. docs/archive.md says in prose what is written.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/Pump.h"

namespace quillmoor {

enum class ZipErrorNumber {
  busy = 2001,     ///< an operation was started from within another
  aborted,         ///< `abort` was called
  badArgument,     ///< a pattern, path, password or segment size that cannot be
  folderNotFound,  ///< the folder of a pattern is not there or cannot be read
  cannotRead,      ///< the stub cannot be read
  cannotWrite,     ///< the archive cannot be written: no room, no right, no such folder
  internal         ///< memory has run out, or a library has failed
};

/// Raised by every operation that fails as a whole, after the error event. `what()` is a sentence for a
/// person and names the file; it never holds a password.
class ZipError : public std::runtime_error {
 public:
  ZipError(ZipErrorNumber number, const std::string& description)
      : std::runtime_error(description), number_(number) {}
  ZipErrorNumber number() const { return number_; }

 private:
  ZipErrorNumber number_;
};

enum class ZipStatus { inProgress = 1, done = 2 };

/// How far a file is packed. Every file that is packed gives at least one event with `inProgress` and then
/// one with `done`, one file after the other, in the order in which they stand in the archive. Folders give
/// none.
struct ZipProgress {
  ZipStatus status = ZipStatus::inProgress;
  std::string item;        ///< name in the archive
  std::int64_t size = 0;   ///< bytes of the file as it was opened
  std::int64_t count = 0;  ///< bytes of it that are packed
};

/// Asks for an archive in segments. Made new for each archive.
struct ZipSegmentOptions {
  /// Upper bound of a segment in bytes, from kMinimum. One case alone goes above it: the first segment of a
  /// self-extracting set holds the stub even where the stub is longer (and then nothing else of weight).
  std::int64_t segmentBytes = 0;
  static constexpr std::int64_t kMinimum = 65'536;
};

/// What an archive came to.
struct ZipResult {
  std::int64_t files = 0;       ///< packed, among them those with an error event that could be packed in part
  std::int64_t folders = 0;     ///< packed
  std::int64_t errors = 0;      ///< error events
  std::int64_t inputBytes = 0;  ///< read from the files
  std::int64_t outputBytes = 0;  ///< of all segments
  /// Every file that makes up the archive, in the order of reading; one unless it is in segments. The path
  /// that was asked for is among them: the last segment of a plain set, the first of a self-extracting one.
  std::vector<std::string> paths;
};

/// Packs one archive at a time: any number of `addFiles`, then one of the `write` operations.
///
/// All on one thread, as its callers see it: events come from within `write`, on the caller's thread. `write`
/// calls `pump` at least every 20 ms until it is done; the pump and the events may call `abort`, any other
/// operation started from inside them raises `busy`.
///
/// The archive appears whole or not at all. It is written in a hidden folder beside `path` (see WorkFolder)
/// and renamed when all is written, the file called `path` last, so that a set without it is an unfinished
/// one. An operation that raises removes what it has written; of a program that is killed it stays until the
/// next archive in that folder, or EndKilledExchanges. What stood under
/// `path` stands until then. A single file is replaced in one step. A former set is moved aside while names
/// are given, and put back when one cannot be given; where the program is killed at that moment or something
/// holds a file, by the next archive of that name (see giveSetItsNames). Segments left over from a former,
/// longer set of that name are removed.
class ZipArchive {
 public:
  ZipArchive();
  ~ZipArchive();
  ZipArchive(const ZipArchive&) = delete;
  ZipArchive& operator=(const ZipArchive&) = delete;

  // --- properties and events (any may be empty)

  Pump pump;

  std::function<void(const ZipProgress&)> onProgress;

  /// Something went wrong. Either one file or folder could not be packed as it was (it cannot be opened, it
  /// has vanished, grown, shrunk or changed meanwhile, it is a link): then the rest is packed all the same,
  /// and of a file that could be read in part, that part. Or the operation as a whole fails: then ZipError
  /// follows.
  std::function<void(const std::string& description)> onError;

  // --- operations

  /// Notes what `write` shall pack: the files of a folder whose names match. `pattern` is a folder, a
  /// separator and a name pattern with "*" (any text) and "?" (any one character); more than one separator in
  /// a row does no harm. With `recurse` sub-folders are packed too, empty ones as well, whatever they are
  /// called ("*" finds names that begin with a dot). Names in the archive begin below the folder. Symbolic
  /// links and special files are left out with an error event; the folder itself may be a link. Of two files
  /// that would have one name the first is packed. The archive being written is not packed into itself, nor
  /// is anything under a reserved name (see IsReservedLocalName).
  ///
  /// A password (UTF-8, 1 to 1,000 bytes) encrypts the contents of these files with AES-256 (AE-2); their
  /// names, sizes and times stay readable. Nothing is read yet. Raises badArgument.
  void addFiles(const std::string& pattern, bool recurse,
                const std::optional<std::string>& password = std::nullopt);

  /// Writes what was added as a plain archive to `path`, whose folder must exist; blocking. Nothing added, or
  /// nothing found, gives an archive without entries. In segments they are called as `path` with .z01, .z02,
  /// ... in place of its ending (which must then be ".zip", in whatever case), and `path` is the last one; a
  /// set that fits one segment is `path` alone. Afterwards, raised or not, nothing is noted any more.
  ZipResult write(const std::string& path, const std::optional<ZipSegmentOptions>& segments = std::nullopt);

  /// The same behind the program `stubPath`: `path` is a program that unpacks itself, and an archive to other
  /// zip tools. In segments, `path` (which must then end in ".exe") is the first, followed by .z02, .z03, ...
  /// and .zip. On Linux, whoever may read it may execute it.
  ZipResult writeSelfExtracting(const std::string& path, const std::string& stubPath,
                                const std::optional<ZipSegmentOptions>& segments = std::nullopt);

  bool busy() const;

  /// Makes the `write` in progress raise `aborted` soon, leaving nothing: from an event in any case, from the
  /// pump until the files are given their names. Returns without waiting; nothing happens when none is in
  /// progress.
  void abort();

 private:
  ZipResult write(const std::string& path, const std::optional<std::string>& stubPath,
                  const std::optional<ZipSegmentOptions>& segments);
  [[noreturn]] void fail(ZipErrorNumber number, const std::string& description) const;

  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace quillmoor
