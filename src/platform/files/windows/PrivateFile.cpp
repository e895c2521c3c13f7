#include "platform/files/PrivateFile.h"

namespace quillmoor {

void WritePrivateFile(const std::string& file, std::string_view bytes, AtomicFile::Survives survives) {
  AtomicFile whole(file, survives, AtomicFile::Readers::owner);
  whole.write(bytes);
  whole.commit();
}

void MakePrivateFolder(const std::filesystem::path& folder) {
  std::filesystem::create_directories(folder);
}

}  // namespace quillmoor
