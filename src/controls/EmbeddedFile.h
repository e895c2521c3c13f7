// Files that are compiled into the program (cmake/EmbedFiles.cmake).
#pragma once

#include <cstddef>

namespace quillmoor {

struct EmbeddedFile {
  const char* name;  // path below the embedded folder
  const unsigned char* data;
  std::size_t size;
};

/// The program's pictures: PNG files below assets/.
extern const EmbeddedFile kPictureFiles[];
extern const std::size_t kPictureFilesCount;

}  // namespace quillmoor
