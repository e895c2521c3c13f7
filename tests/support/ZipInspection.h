// Takes an archive apart by the letter of the format and complains about everything that is not as it should
// be. Knows the format on its own, so that a mistake made in writing is not made again in checking. Of
// archives below 4 GiB and 65,535 segments only: the wide fields have no place in those.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quillmoor::testing {

struct InspectedEntry {
  std::string name;
  unsigned flags = 0, method = 0;  // method: the real one, also behind encryption
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
  std::vector<std::string> names() const;
};

/// `paths`: the segments in their order. Raises std::runtime_error that says what is wrong. `prefix`: bytes
/// of a stub in front.
InspectedArchive inspectArchive(const std::vector<std::string>& paths, const std::string& password = "",
                                std::size_t prefix = 0);

}  // namespace quillmoor::testing
