// Packing an archive from its first byte to its last: reads files ahead, has them compressed, writes what
// comes out in order. Runs on a thread of its own, so that a slow disk holds up nobody else.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/zip/ZipArchive.h"

namespace quillmoor::zip {

struct PackSource {
  std::string pattern;
  bool recurse = false;
  std::optional<std::string> password;
};

struct PackRequest {
  std::string path;
  std::optional<std::string> stubPath;
  std::optional<std::int64_t> segmentBytes;
  std::vector<PackSource> sources;
};

/// Where the packer's events go, and what stops it.
class PackEvents {
 public:
  virtual ~PackEvents() = default;
  virtual void progress(ZipProgress progress) = 0;
  virtual void error(const std::string& description) = 0;
  /// Raises ZipError when the operation is to end.
  virtual void checkAborted() = 0;
  /// Waits until every event has been heard of: the last chance to be told to end. Raises as `checkAborted`
  /// does.
  virtual void settle() = 0;
};

/// Raises ZipError, leaving nothing.
ZipResult pack(const PackRequest& request, PackEvents& events);

}  // namespace quillmoor::zip
