#include "engine/TransferType.h"

#include <algorithm>

namespace quillmoor {
namespace {

char toLower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace

std::vector<std::string> LoadAsciiFilesTypes(std::string_view asciiExts) {
  std::vector<std::string> extensions;
  for (;;) {
    const std::size_t end = asciiExts.find('|');
    extensions.emplace_back(asciiExts.substr(0, end));
    if (end == std::string_view::npos) return extensions;
    asciiExts.remove_prefix(end + 1);
  }
}

const char* ChooseTransferType(std::string_view fileName, const std::vector<std::string>& asciiExtensions) {
  for (const std::string& extension : asciiExtensions) {
    if (extension.empty() || extension.size() > fileName.size()) continue;
    const std::string_view tail = fileName.substr(fileName.size() - extension.size());
    const bool same = std::equal(tail.begin(), tail.end(), extension.begin(),
                                 [](char ofName, char ofList) { return toLower(ofName) == ofList; });
    if (same) return "A";
  }
  return "I";
}

}  // namespace quillmoor
