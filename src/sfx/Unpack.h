// Unpacks an archive into a folder. A file appears whole and verified or not at all.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "platform/zip/ZipReader.h"

namespace quillmoor::sfx {

struct UnpackEvents {
  /// A file of that name is there already: shall it be replaced? Asked before anything is read.
  std::function<bool(const std::string& name)> replace;
  /// Something was left out, and why: one line. The rest is unpacked all the same.
  std::function<void(const std::string& line)> refused;
  /// Something was unpacked whole, but the disk did not take its time or permissions: one line.
  std::function<void(const std::string& line)> note;
  /// Bytes done of all; often.
  std::function<void(const std::string& name, std::uint64_t done, std::uint64_t all)> progress;
};

struct UnpackResult {
  std::uint64_t files = 0, refused = 0, bytes = 0;
};

/// What is to come.
struct ArchiveSummary {
  std::uint64_t files = 0, bytes = 0;
  bool encrypted = false;
};
ArchiveSummary summaryOf(ZipReader& archive);

/// Unpacks all into `folder`, which is made with its parents when it is not there. Times and permissions are
/// restored as far as the disk takes them, which counts as no refusal. Names that lead out of the folder,
/// links and special files are refused. Raises ArchiveError for a damaged or incomplete archive (what was
/// unpacked before stays), std::system_error when the disk does not take a file.
UnpackResult unpack(ZipReader& archive, const std::string& folder, std::string_view password,
                    const UnpackEvents& events);

/// Reads and verifies all, and writes nothing.
UnpackResult test(ZipReader& archive, std::string_view password, const UnpackEvents& events);

}  // namespace quillmoor::sfx
