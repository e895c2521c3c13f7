// Reads the archive behind the self-extractor: finds its end, lists its entries, gives their contents.
// Whatever the bytes are, it reads within bounds and takes no more memory than for a header.
//
// Source: zip application note §4.3 (records), §4.5.3 (zip64), §8 (split archives); AE-2 as in
// platform/zip/ZipCrypto.h.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/files/ArchiveFiles.h"
#include "platform/zip/Segments.h"

namespace quillmoor::sfx {

enum class ArchiveFault { damaged, incomplete, unsupported, wrongPassword };

/// `what()` is one line for a person.
class ArchiveError : public std::runtime_error {
 public:
  ArchiveError(ArchiveFault fault, const std::string& description)
      : std::runtime_error(description), fault_(fault) {}
  ArchiveFault fault() const { return fault_; }

 private:
  ArchiveFault fault_;
};

/// One entry as the central directory tells it. Its name is whatever stands there: see EntryName.h.
struct ArchiveEntry {
  std::string name;
  bool encrypted = false;
  unsigned aesVersion = 0;
  unsigned method = 0;
  std::uint32_t crc = 0;
  std::uint64_t size = 0;
  std::uint64_t packedSize = 0;
  Place place;
  std::uint8_t hostSystem = 0;
  FileState state;

  bool folder() const { return name.ends_with('/'); }
  /// A symbolic link, a device, a pipe: by its Unix mode.
  bool special() const;
};

class ZipReader {
 public:
  /// Opens the archive at the end of the program, or the set that the program is the first segment of:
  /// PROGRAM, then its name with .z02, .z03, ... and .zip in place of its ending. Raises ArchiveError.
  explicit ZipReader(const std::string& programPath);

  std::uint64_t entries() const { return entries_; }

  /// Calls `entry` for each in the order of the directory. Raises ArchiveError.
  void forEach(const std::function<void(const ArchiveEntry& entry)>& entry);

  /// Gives the contents to `sink` piece by piece, and checks them: only when it returns are they what was
  /// packed. Raises ArchiveError, wrongPassword before anything was given.
  void contents(const ArchiveEntry& entry, std::string_view password,
                const std::function<void(std::span<const std::uint8_t>)>& sink);

 private:
  struct End;
  static std::optional<End> findEnd(Segments& segments, std::uint32_t disk);
  void openSet(const std::string& programPath);
  ArchiveEntry readCentral(Cursor& cursor) const;
  [[noreturn]] void damaged(const std::string& what) const;

  std::unique_ptr<Segments> segments_;
  std::string name_;
  std::uint64_t entries_ = 0;
  Place directory_;
  /// What a tool that has put another program in front forgot to add to every offset.
  std::int64_t shift_ = 0;
};

}  // namespace quillmoor::sfx
