#include "platform/files/LocalPath.h"

#include <windows.h>

#include "platform/system/windows/WideText.h"

namespace quillmoor {

const char kLocalSeparator = '\\';
const LocalNameRules kLocalNameRules = LocalNameRules::windows;

std::string LocalNameKey(const std::string& name) {
  std::wstring key = Widen(name);
  ::CharUpperBuffW(key.data(), static_cast<DWORD>(key.size()));
  return Narrow(key);
}

std::filesystem::path LocalPath(const std::string& text) {
  return Widen(text);
}

std::string LocalPathText(const std::filesystem::path& path) {
  return Narrow(path.native());
}

}  // namespace quillmoor
