// Reads an archive strictly by the format and reports every deviation from it. It shares no code with the
// writer, so that a mistake in writing is not repeated in checking. Only for archives below 4 GiB and 65,535
// segments, which have no zip64 fields.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quillmoor::testing {

struct InspectedEntry {
  std::string name;
  unsigned flags = 0, method = 0;  // method: that of the data below the encryption
  bool encrypted = false;
  std::uint32_t dosTime = 0, attributes = 0;
  std::optional<std::int64_t> modified;
  std::uint64_t size = 0, packedSize = 0;
  std::uint32_t disk = 0;
  std::uint64_t offset = 0;
  std::string contents;
};

struct InspectedArchive {
  std::vector<InspectedEntry> entries;
  /// The entry of that name; fails the test when there is none.
  const InspectedEntry& operator[](const std::string& name) const;
  std::vector<std::string> names() const {
    std::vector<std::string> names;
    for (const InspectedEntry& entry : entries) names.push_back(entry.name);
    return names;
  }
};

/// `paths`: the segments in their order; `prefix`: size of the stub before the archive. Raises
/// std::runtime_error that says what is wrong.
InspectedArchive inspectArchive(const std::vector<std::string>& paths, const std::string& password = "",
                                std::size_t prefix = 0);

}  // namespace quillmoor::testing
