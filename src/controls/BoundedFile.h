// Reads whole files up to a size limit.
#pragma once

#include <cstddef>
#include <string>

namespace quillmoor {

/// Raises std::runtime_error when the file cannot be read or is larger than `limit` bytes.
std::string ReadBoundedFile(const std::string& path, std::size_t limit);

}  // namespace quillmoor
