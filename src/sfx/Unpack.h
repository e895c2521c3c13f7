// Unpacks an archive into a folder. A file appears complete and verified or not at all.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "platform/zip/ZipReader.h"

namespace quillmoor::sfx {

struct UnpackEvents {
  /// A file of that name exists: shall it be replaced? Called before anything of the entry is read.
  std::function<bool(const std::string& name)> replace;
  /// Something was skipped, with the reason: one line. The rest is unpacked all the same.
  std::function<void(const std::string& line)> refused;
  /// Something was unpacked, but the disk did not accept its time or permissions: one line.
  std::function<void(const std::string& line)> note;
  /// Bytes done and in total; called often.
  std::function<void(const std::string& name, std::uint64_t done, std::uint64_t all)> progress;
};

struct UnpackResult {
  std::uint64_t files = 0, refused = 0, bytes = 0;
};

/// What the archive holds.
struct ArchiveSummary {
  std::uint64_t files = 0, bytes = 0;
  bool encrypted = false;
};
ArchiveSummary summaryOf(ZipReader& archive);

/// Unpacks everything into `folder`, creating it and its parents. Times and permissions are restored as far
/// as the disk allows; that is not a refusal. Names that lead out of the folder, links and special files are
/// refused. Raises ArchiveError for a damaged or incomplete archive (files unpacked before stay),
/// std::system_error when the folder cannot be created or a file cannot be written.
UnpackResult unpack(ZipReader& archive, const std::string& folder, std::string_view password,
                    const UnpackEvents& events);

/// Reads and verifies everything, and writes nothing.
UnpackResult test(ZipReader& archive, std::string_view password, const UnpackEvents& events);

}  // namespace quillmoor::sfx
