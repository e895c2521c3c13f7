// A position in an archive that may be split.
#pragma once

#include <cstdint>

namespace quillmoor::zip {

/// Segment number, from 0, and offset in it. An archive that is not split is segment 0.
struct SegmentPlace {
  std::uint32_t disk = 0;
  std::int64_t offset = 0;
};

}  // namespace quillmoor::zip
