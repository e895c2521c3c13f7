#include "controls/BoundedFile.h"

#include <array>
#include <fstream>
#include <stdexcept>

#include "platform/files/LocalPath.h"

namespace quillmoor {

std::string ReadBoundedFile(const std::string& path, std::size_t limit) {
  std::ifstream stream(LocalPath(path), std::ios::binary);
  if (!stream) throw std::runtime_error("cannot be opened");
  std::string content;
  std::array<char, 64 * 1024> piece{};
  while (stream.read(piece.data(), piece.size()) || stream.gcount() > 0) {
    content.append(piece.data(), static_cast<std::size_t>(stream.gcount()));
    if (content.size() > limit)
      throw std::runtime_error("is larger than " + std::to_string(limit) + " bytes");
  }
  if (stream.bad()) throw std::runtime_error("cannot be read");
  return content;
}

}  // namespace quillmoor
