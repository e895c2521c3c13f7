#include "platform/system/ProgramFolder.h"

#include <filesystem>

namespace quillmoor {
namespace {

const std::filesystem::path& executable() {
  static const std::filesystem::path path = std::filesystem::read_symlink("/proc/self/exe");
  return path;
}

}  // namespace

std::string ProgramFolder() {
  std::string folder = executable().parent_path().string();
  if (!folder.ends_with('/')) folder += '/';
  return folder;
}

std::string ProgramPath() {
  return executable().string();
}

std::string ProgramName() {
  return executable().filename().string();
}

}  // namespace quillmoor
