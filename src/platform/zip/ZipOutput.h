// The files of an archive: one, or segments of limited size, under temporary names until all are complete.
//
// Source: zip application note §8 (split archives): the leading signature; headers are not split across
// segments.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/files/Files.h"
#include "platform/files/WorkFolder.h"
#include "platform/zip/SegmentPlace.h"

namespace quillmoor::zip {

/// File names of an archive's segments.
class SegmentNames {
 public:
  /// `selfExtracting`: `path` is the first segment, otherwise the last.
  SegmentNames(std::string path, bool selfExtracting);

  /// Whether the path has the extension a set needs (.zip, or .exe when it is self-extracting).
  bool mayHaveSegments() const { return mayHaveSegments_; }
  /// Final path of segment `disk` (from 0) of a set of `count`.
  std::string final(std::uint32_t disk, std::uint32_t count) const;

  /// Folder of the archive, with a trailing separator; "" for a path without one.
  const std::string& folder() const { return folder_; }
  /// Whether a file of this name in that folder could be part of the archive.
  bool maybePart(std::string_view name) const;

  /// Removes the surplus segments of a previous archive of this name beside the finished one of `count`
  /// segments. A complete set of the other kind (plain or self-extracting) stays.
  void removeSurplus(std::uint32_t count) const;

 private:
  std::string numbered(std::uint32_t disk) const;

  std::string path_;
  std::string folder_;
  std::string stem_;  ///< path without extension
  bool selfExtracting_;
  bool mayHaveSegments_ = false;
};

/// Writes an archive from front to back; the destructor removes unfinished files. Raises std::system_error.
class Output {
 public:
  /// `segmentBytes`: maximum size of a segment; nullopt for one file. Removes what a killed run has left in
  /// that folder, or puts it back if it belongs to a previous set of that name.
  Output(SegmentNames names, std::optional<std::int64_t> segmentBytes, bool selfExtracting);
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  /// Copies the whole stub to the front, whatever the segment size. Must be the first call, if it is made.
  void writeStub(InputFile& stub);
  /// Begins the archive proper: writes the signature of a set in segments.
  void start();

  /// Keeps the next `bytes` bytes in one segment: begins a new one if they do not fit.
  void keepTogether(std::size_t bytes);
  SegmentPlace place() const { return {disk_, size_}; }
  void write(std::string_view bytes);
  void write(std::span<const std::uint8_t> bytes);
  /// Overwrites earlier bytes, in any segment.
  void patch(SegmentPlace place, std::string_view bytes);

  /// Renames the files into place. Returns their paths in segment order.
  std::vector<std::string> finish();

  std::int64_t totalBytes() const { return total_; }
  const SegmentNames& names() const { return names_; }
  /// The path of a temporary file beside the segments.
  std::string spool() const { return work_->file(0); }

 private:
  void open();
  void flush();
  void nextSegment();
  std::string temporary(std::uint32_t disk) const { return work_->file(disk + 1); }

  SegmentNames names_;
  std::optional<std::int64_t> limit_;
  bool selfExtracting_;
  std::optional<WorkFolder> work_;
  std::unique_ptr<OutputFile> file_;
  std::vector<std::uint8_t> buffer_;
  std::uint32_t disk_ = 0;
  std::int64_t size_ = 0;   ///< of the current segment, including the buffer
  std::int64_t total_ = 0;  ///< of all segments
  SegmentPlace signature_;
};

}  // namespace quillmoor::zip
