// Reads the archive appended to the self-extractor: finds its end, lists its entries, extracts their
// contents. Reads within bounds and limits its memory, whatever the bytes are.
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

#include "platform/files/Files.h"
#include "platform/zip/Segments.h"

namespace quillmoor::sfx {

enum class ArchiveFault { damaged, incomplete, unsupported, wrongPassword };

/// `what()` is one line for the user.
class ArchiveError : public std::runtime_error {
 public:
  ArchiveError(ArchiveFault fault, const std::string& description)
      : std::runtime_error(description), fault_(fault) {}
  ArchiveFault fault() const { return fault_; }

 private:
  ArchiveFault fault_;
};

/// One entry of the central directory. Its name is unchecked: see EntryName.h.
struct ArchiveEntry {
  std::string name;
  bool encrypted = false;
  unsigned aesVersion = 0;
  unsigned method = 0;
  std::uint32_t crc = 0;
  std::uint64_t size = 0;
  std::uint64_t packedSize = 0;
  zip::SegmentPlace place;
  std::uint8_t hostSystem = 0;
  FileState state;

  bool folder() const { return name.ends_with('/'); }
  /// Whether its Unix mode is that of a symbolic link, a device or a pipe.
  bool special() const;
};

class ZipReader {
 public:
  /// Opens the archive at the end of the program, or the set that the program is the first segment of:
  /// PROGRAM, then its name with the extensions .z02, .z03, ... and .zip. Raises ArchiveError.
  explicit ZipReader(const std::string& programPath);

  std::uint64_t entries() const { return entries_; }

  /// Calls `entry` for each entry in directory order. Raises ArchiveError.
  void forEach(const std::function<void(const ArchiveEntry& entry)>& entry);

  /// Passes the contents to `sink` piece by piece and verifies them: they are valid only when it returns.
  /// Raises ArchiveError; wrongPassword before anything was passed on.
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
  zip::SegmentPlace directory_;
  /// The length of a prefix that another tool has put in front without adjusting the offsets.
  std::int64_t shift_ = 0;
};

}  // namespace quillmoor::sfx
