// Files that are compiled into the program (cmake/EmbedFiles.cmake).
#pragma once

#include <cstddef>

namespace quillmoor {

struct EmbeddedFile {
  const char* name;  // path below the folder it comes from
  const unsigned char* data;
  std::size_t size;
};

/// The pictures of the program, PNG files below assets/.
extern const EmbeddedFile kPictureFiles[];
extern const std::size_t kPictureFilesCount;

}  // namespace quillmoor
