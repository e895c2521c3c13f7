// The zip component as the archive stage uses it: one order makes one archive.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/zip/ZipArchive.h"

namespace quillmoor {

struct PackingOrder {
  std::string pattern;  // for ZipArchive::addFiles; sub-folders are included
  std::optional<std::string> password;
  std::string path;
  std::string stubPath;  // the self-extractor's file; empty: a plain archive
  std::optional<ZipSegmentOptions> segments;

  std::function<void(const ZipProgress&)> onProgress;
  std::function<void(const std::string& description)> onError;
};

/// Abstract so that tests can simulate a full disk or an error in the middle of packing.
class ArchivePacker {
 public:
  virtual ~ArchivePacker() = default;

  /// Blocks until done. Raises ZipError after calling the order's onError.
  virtual ZipResult pack(const PackingOrder& order) = 0;
};

/// Packs with the zip component.
class ZipArchivePacker final : public ArchivePacker {
 public:
  explicit ZipArchivePacker(Pump pump) { zip_.pump = std::move(pump); }

  ZipResult pack(const PackingOrder& order) override;

 private:
  ZipArchive zip_;
};

}  // namespace quillmoor
