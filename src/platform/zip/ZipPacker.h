// Packs an archive: reads files ahead, compresses them on worker threads, and writes the results in order.
// Runs on a thread of its own, so that a slow disk blocks nobody else.
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

/// Receives the packer's events, and stops it.
class PackEvents {
 public:
  virtual ~PackEvents() = default;
  virtual void progress(ZipProgress progress) = 0;
  virtual void error(const std::string& description) = 0;
  /// Raises ZipError when the operation was aborted.
  virtual void checkAborted() = 0;
  /// Waits until every event has been handled: the last chance to abort. Raises as `checkAborted` does.
  virtual void drain() = 0;
};

/// Raises ZipError and leaves no files.
ZipResult pack(const PackRequest& request, PackEvents& events);

}  // namespace quillmoor::zip
