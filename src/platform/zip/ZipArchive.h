// The zip archive: packs folders into one file or into segments, plain or self-extracting, with or without a
// password. Blocks while it pumps.
//
// Format: PKWARE zip application note 6.3 (§4.3 records, §4.5.3 zip64, §8 split archives, appendix D names)
// and the AE-2 encryption of common zip tools. docs/archive.md describes what is written.
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
  badArgument,     ///< an invalid pattern, path, password or segment size
  folderNotFound,  ///< the folder of a pattern does not exist or cannot be read
  cannotRead,      ///< the stub cannot be read
  cannotWrite,     ///< the archive cannot be written: disk full, access denied, no such folder
  internal         ///< out of memory, or a library failed
};

/// Raised by every operation that fails as a whole, after the error event. `what()` is a message for the user
/// and names the file; it never contains a password.
class ZipError : public std::runtime_error {
 public:
  ZipError(ZipErrorNumber number, const std::string& description)
      : std::runtime_error(description), number_(number) {}
  ZipErrorNumber number() const { return number_; }

 private:
  ZipErrorNumber number_;
};

enum class ZipStatus { inProgress = 1, done = 2 };

/// Progress of a file. Every file packed has at least one `inProgress` event and then one `done` event, one
/// file after the other in archive order. Folders have none.
struct ZipProgress {
  ZipStatus status = ZipStatus::inProgress;
  std::string item;        ///< name in the archive
  std::int64_t size = 0;   ///< bytes of the file when it was opened
  std::int64_t count = 0;  ///< bytes packed so far
};

/// Requests an archive in segments. Make a new one for each archive.
struct ZipSegmentOptions {
  /// Maximum size of a segment in bytes, at least kMinimum. Only one segment may exceed it: the first of a
  /// self-extracting set holds a longer stub whole (and then little else).
  std::int64_t segmentBytes = 0;
  static constexpr std::int64_t kMinimum = 65'536;
};

/// The result of packing.
struct ZipResult {
  std::int64_t files = 0;        ///< packed, including those packed in part with an error event
  std::int64_t folders = 0;      ///< packed
  std::int64_t errors = 0;       ///< error events
  std::int64_t inputBytes = 0;   ///< read from the files
  std::int64_t outputBytes = 0;  ///< of all segments
  /// Every file of the archive in reading order; one unless it is in segments. Includes the path requested:
  /// the last segment of a plain set, the first of a self-extracting one.
  std::vector<std::string> paths;
};

/// Packs one archive at a time: any number of `addFiles`, then one of the `write` operations.
///
/// Single-threaded for its callers: events come from within `write`, on the caller's thread. `write` calls
/// `pump` at least every 20 ms until it is done; the pump and the events may call `abort`, any other
/// operation started from inside them raises `busy`.
///
/// The archive appears whole or not at all. It is written in a hidden folder beside `path` (see WorkFolder)
/// and renamed when all is written, the file called `path` last, so that a set without it is an unfinished
/// one. An operation that raises removes what it has written; of a program that is killed it stays until the
/// next archive in that folder, or EndKilledExchanges. What stood under
/// `path` stands until then. A single file is replaced in one step. A former set is moved aside while names
/// are given, and put back when one cannot be given; where the program is killed at that moment or something
/// holds a file, by the next archive of that name (see renameSetIntoPlace). Segments left over from a former,
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

  /// An error. Either one file or folder could not be packed unchanged (it cannot be opened, or it vanished,
  /// grew, shrank or changed while it was packed, or it is a link): then the rest is packed, including the
  /// readable part of that file. Or the operation fails as a whole: then ZipError follows.
  std::function<void(const std::string& description)> onError;

  // --- operations

  /// Adds the files of a folder whose names match for `write` to pack. `pattern` is a folder, one or more
  /// separators and a name pattern with "*" (any text) and "?" (any one character). With `recurse` all
  /// sub-folders are packed too, even empty ones ("*" matches names that begin with a dot). Names in the
  /// archive are relative to the folder. Symbolic links and special files are skipped with an error event;
  /// the folder itself may be a link. Of two files with the same archive name the first is packed. The
  /// archive being written is not packed into itself, nor is anything under a reserved name (see
  /// IsReservedLocalName).
  ///
  /// A password (UTF-8, 1 to 1,000 bytes) encrypts the contents of these files with AES-256 (AE-2); their
  /// names, sizes and times stay readable. Reads nothing yet. Raises badArgument.
  void addFiles(const std::string& pattern, bool recurse,
                const std::optional<std::string>& password = std::nullopt);

  /// Writes what was added as a plain archive to `path`, whose folder must exist; blocking. When nothing was
  /// added or found, the archive has no entries. Segments are named like `path` with .z01, .z02, ... as
  /// extension (`path` must then end in ".zip", in any case), and `path` is the last one; a set that fits
  /// into one segment is `path` alone. Afterwards, even if it raises, nothing is added any more.
  ZipResult write(const std::string& path, const std::optional<ZipSegmentOptions>& segments = std::nullopt);

  /// Writes a self-extracting archive: `path` is the program `stubPath` followed by the archive, which other
  /// zip tools can read, too. In segments, `path` (which must then end in ".exe") is the first, followed by
  /// .z02, .z03, ... and .zip. On Linux everybody who may read it may execute it.
  ZipResult writeSelfExtracting(const std::string& path, const std::string& stubPath,
                                const std::optional<ZipSegmentOptions>& segments = std::nullopt);

  bool busy() const;

  /// Makes the `write` in progress raise `aborted` soon and remove what it has written: from an event at any
  /// time, from the pump until the files are renamed into place. Returns without waiting; does nothing when
  /// none is in progress.
  void abort();

 private:
  ZipResult write(const std::string& path, const std::optional<std::string>& stubPath,
                  const std::optional<ZipSegmentOptions>& segments);
  [[noreturn]] void fail(ZipErrorNumber number, const std::string& description) const;

  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace quillmoor
