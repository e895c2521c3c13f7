// Files that are read whole, up to a bound.
#pragma once

#include <cstddef>
#include <string>

namespace quillmoor {

/// Raises std::runtime_error when the file cannot be read or holds more than `limit` bytes.
std::string ReadBoundedFile(const std::string& path, std::size_t limit);

}  // namespace quillmoor
