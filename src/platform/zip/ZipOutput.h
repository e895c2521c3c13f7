// The files an archive is written to: one, or segments of a bounded size, under temporary names until all is
// written.
//
// Source: zip application note §8 (split archives): the signature in front, no header across two segments.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/files/ArchiveFiles.h"
#include "platform/files/WorkFolder.h"

namespace quillmoor::zip {

/// A place in the set: number of the segment, from 0, and offset in it.
struct Place {
  std::uint32_t disk = 0;
  std::int64_t offset = 0;
};

/// How the segments of an archive are called.
class SegmentNames {
 public:
  /// `selfExtracting`: `path` is the first segment, else the last.
  SegmentNames(std::string path, bool selfExtracting);

  /// Has the path the ending that a set's needs (.zip, or .exe when it is self-extracting)?
  bool mayHaveSegments() const { return mayHaveSegments_; }
  /// Final name of segment `disk` (from 0) of a set of `count`.
  std::string final(std::uint32_t disk, std::uint32_t count) const;

  /// Folder of the archive, with its separator; "" for a path without one.
  const std::string& folder() const { return folder_; }
  /// Could a file of this name in that folder be part of the archive?
  bool maybePart(std::string_view name) const;

  /// What is left of a former archive of this name beside the finished one of `count` segments: its surplus
  /// segments go. A set of the other kind (plain or self-extracting) that is still whole stays.
  void removeSurplus(std::uint32_t count) const;

 private:
  std::string numbered(std::uint32_t disk) const;

  std::string path_;
  std::string folder_;
  std::string stem_;  ///< path without its ending
  bool selfExtracting_;
  bool mayHaveSegments_ = false;
};

/// Writes an archive front to back; what is not finished is removed with this. Errors are raised as
/// std::system_error.
class Output {
 public:
  /// `segmentBytes`: upper bound of a segment; none: one file. What a killed run has left in that folder is
  /// removed, or put back if it is of a former set of that name.
  Output(SegmentNames names, std::optional<std::int64_t> segmentBytes, bool selfExtracting);
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  /// Copies the stub to the front, whole, whatever the size of a segment. To be called first, if at all.
  void writeStub(InputFile& stub);
  /// Begins the archive itself: in segments, its signature.
  void start();

  /// The next `bytes` that are written stand in one segment: begins a new one where they would not fit.
  void keepTogether(std::size_t bytes);
  Place place() const { return {disk_, size_}; }
  void write(std::string_view bytes);
  void write(std::span<const std::uint8_t> bytes);
  /// Writes over what was written before, in whatever segment.
  void patch(Place place, std::string_view bytes);

  /// Gives the files their final names. Returns these in the order of the segments.
  std::vector<std::string> finish();

  std::int64_t totalBytes() const { return total_; }
  const SegmentNames& names() const { return names_; }
  /// The path for what is kept beside the segments while they are written.
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
  std::int64_t size_ = 0;   ///< of the present segment, with what is still in the buffer
  std::int64_t total_ = 0;  ///< of all segments
  Place signature_;
};

}  // namespace quillmoor::zip
