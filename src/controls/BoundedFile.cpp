#include "controls/BoundedFile.h"

#include <fstream>
#include <stdexcept>

#include "platform/LocalPath.h"

namespace quillmoor {

std::string ReadBoundedFile(const std::string& path, std::size_t limit) {
  std::ifstream stream(LocalPath(path), std::ios::binary);
  if (!stream) throw std::runtime_error("cannot be opened");
  std::string content(limit + 1, '\0');
  stream.read(content.data(), static_cast<std::streamsize>(content.size()));
  const auto got = static_cast<std::size_t>(stream.gcount());
  if (stream.bad() || (!stream.eof() && got <= limit)) throw std::runtime_error("cannot be read");
  if (got > limit) throw std::runtime_error("is larger than " + std::to_string(limit) + " bytes");
  content.resize(got);
  content.shrink_to_fit();
  return content;
}

}  // namespace quillmoor
