// The segments of an archive read as one file, continuing in the next segment at the end of one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/files/Files.h"
#include "platform/zip/SegmentPlace.h"

namespace quillmoor::sfx {

class Segments {
 public:
  /// The files need not exist yet: each is opened when it is read; raises std::system_error when that fails.
  explicit Segments(std::vector<std::string> paths) : paths_(std::move(paths)) {}

  std::uint32_t count() const { return static_cast<std::uint32_t>(paths_.size()); }
  const std::string& path(std::uint32_t disk) const { return paths_[disk]; }
  std::int64_t size(std::uint32_t disk);

  /// Reads up to `bytes.size()` bytes, 0 only at or after the end of the last segment. Advances `place`.
  std::size_t read(zip::SegmentPlace& place, std::span<std::uint8_t> bytes);

 private:
  InputFile& open(std::uint32_t disk);

  std::vector<std::string> paths_;
  std::optional<InputFile> file_;  ///< the segment read last
  std::uint32_t disk_ = 0;
  std::int64_t size_ = 0;
};

/// Buffered sequential reading of small items.
class Cursor {
 public:
  Cursor(Segments& segments, zip::SegmentPlace place) : segments_(segments), next_(place) {}

  /// False when the end is reached first.
  bool take(std::span<std::uint8_t> bytes);
  /// The bytes at hand, at least one and at most `most`; empty at the end.
  std::span<std::uint8_t> some(std::size_t most);
  bool skip(std::size_t count);

 private:
  bool fill();

  Segments& segments_;
  zip::SegmentPlace next_;
  std::vector<std::uint8_t> buffer_;
  std::size_t at_ = 0;
};

}  // namespace quillmoor::sfx
