#include "platform/files/WholeFile.h"

#include <utility>

#include "platform/files/LocalPath.h"

namespace quillmoor {
namespace {

constexpr unsigned kForEveryone = 0666, kForOwner = 0600;

/// What is replaced: of a link, where it leads.
std::filesystem::path resolved(std::filesystem::path target, WholeFile::Readers readers) {
  std::error_code ignored;
  if (readers == WholeFile::Readers::owner && std::filesystem::is_symlink(target, ignored))
    return std::filesystem::weakly_canonical(target);
  return target;
}

std::string folderOf(const std::filesystem::path& target) {
  std::string folder = LocalPathText(target.parent_path());
  if (!folder.empty() && folder.back() != kLocalSeparator) folder += kLocalSeparator;
  return folder;
}

}  // namespace

WholeFile::WholeFile(std::filesystem::path target, Survives survives, Readers readers)
    : target_(resolved(std::move(target), readers)),
      file_(folderOf(target_), readers == Readers::owner ? kForOwner : kForEveryone),
      survives_(survives),
      readers_(readers) {}

void WholeFile::write(std::string_view bytes) {
  file_.write(bytes);
}

void WholeFile::commit() {
  const bool power = survives_ == Survives::power;
  if (power) file_.flushToDisk();
  file_.renameTo(LocalPathText(target_), {power, readers_ == Readers::owner});
}

}  // namespace quillmoor
