#include "platform/files/PrivateFile.h"

namespace quillmoor {

void WritePrivateFile(const std::filesystem::path& file, std::string_view bytes,
                      WholeFile::Survives survives) {
  WholeFile whole(file, survives, WholeFile::Readers::owner);
  whole.write(bytes);
  whole.commit();
}

void MakePrivateFolder(const std::filesystem::path& folder) {
  std::filesystem::create_directories(folder);
}

}  // namespace quillmoor
