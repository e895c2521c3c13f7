#include "platform/LocalPath.h"

#include "platform/windows/WideText.h"

namespace quillmoor {

const char kLocalSeparator = '\\';
const LocalNameRules kLocalNameRules = LocalNameRules::windows;

std::filesystem::path LocalPath(const std::string& text) {
  return Widen(text);
}

std::string LocalPathText(const std::filesystem::path& path) {
  return Narrow(path.native());
}

}  // namespace quillmoor
