// The zip archive as the archive stage sees it: one order, one archive.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/zip/ZipArchive.h"

namespace quillmoor {

struct PackingOrder {
  std::string pattern;  // as ZipArchive::addFiles takes it; sub-folders are packed too
  std::optional<std::string> password;
  std::string path;
  std::string stubPath;  // of the self-extractor; empty: a plain archive
  std::optional<ZipSegmentOptions> segments;

  std::function<void(const ZipProgress&)> onProgress;
  std::function<void(const std::string& description)> onError;
};

/// A seam for tests, which let a disk fill up or a packing fail in its middle.
class ArchivePacker {
 public:
  virtual ~ArchivePacker() = default;

  /// Blocking. Raises ZipError, after the order's error event.
  virtual ZipResult pack(const PackingOrder& order) = 0;
};

/// Packs with the zip component.
class ZipPacker final : public ArchivePacker {
 public:
  explicit ZipPacker(Pump pump) { zip_.pump = std::move(pump); }

  ZipResult pack(const PackingOrder& order) override;

 private:
  ZipArchive zip_;
};

}  // namespace quillmoor
