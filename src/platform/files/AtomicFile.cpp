#include "platform/files/AtomicFile.h"

#include <filesystem>

#include "platform/files/LocalPath.h"
#include "platform/files/ReservedNames.h"

namespace quillmoor {
namespace {

constexpr int kMostAttempts = 1000;

/// The file to replace: for a link, its target.
std::string resolved(const std::string& target, AtomicFile::Readers readers) {
  std::error_code ignored;
  if (readers == AtomicFile::Readers::owner && std::filesystem::is_symlink(LocalPath(target), ignored))
    return LocalPathText(std::filesystem::weakly_canonical(LocalPath(target)));
  return target;
}

}  // namespace

AtomicFile::AtomicFile(const std::string& target, Survives survives, Readers readers)
    : target_(resolved(target, readers)), survives_(survives), readers_(readers) {
  for (int attempt = 1; handle_ == kNone; ++attempt) {
    path_ = FolderPart(target_) + NewTemporaryName();
    if (!create() && attempt == kMostAttempts)
      throw std::system_error(std::make_error_code(std::errc::file_exists), "cannot create " + path_);
  }
}

AtomicFile::~AtomicFile() {
  if (!renamed_) removeFile(path_);  // while it is locked
}

void AtomicFile::write(std::string_view bytes) {
  OpenFile::write({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

}  // namespace quillmoor
