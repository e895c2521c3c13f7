#include "engine/TransferType.h"

#include "base/Ascii.h"
#include "base/SplitText.h"

namespace quillmoor {
std::vector<std::string> LoadAsciiFilesTypes(std::string_view asciiExts) {
  return SplitText(asciiExts, "|");
}

const char* ChooseTransferType(std::string_view fileName, const std::vector<std::string>& asciiExtensions) {
  const std::string name = AsciiLower(fileName);
  for (const std::string& extension : asciiExtensions) {
    if (!extension.empty() && name.ends_with(extension)) return "A";
  }
  return "I";
}

}  // namespace quillmoor
