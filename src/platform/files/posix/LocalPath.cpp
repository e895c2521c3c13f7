#include "platform/files/LocalPath.h"

namespace quillmoor {

const char kLocalSeparator = '/';
const LocalNameRules kLocalNameRules = LocalNameRules::posix;

std::string LocalNameKey(const std::string& name) {
  return name;
}

std::filesystem::path LocalPath(const std::string& text) {
  return text;
}

std::string LocalPathText(const std::filesystem::path& path) {
  return path.native();
}

}  // namespace quillmoor
