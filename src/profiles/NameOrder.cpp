#include "profiles/NameOrder.h"

#include <algorithm>

#include "platform/CodePage.h"

namespace quillmoor {
namespace {

/// Names are ANSI text in their file, so the letters of the code page are the letters there are.
std::string folded(const std::string& name) {
  std::string ansi = ToAnsi(name);
  for (char& c : ansi) {
    const auto byte = static_cast<unsigned char>(c);
    const bool ascii = byte >= 'a' && byte <= 'z';
    const bool latin = byte >= 0xE0 && byte != 0xF7 && byte != 0xFF;  // the division sign and the y with dots
    if (ascii || latin) c = static_cast<char>(byte - 0x20);
  }
  return ansi;
}

}  // namespace

void SortNames(std::vector<std::string>& names) {
  std::stable_sort(names.begin(), names.end(),
                   [](const std::string& a, const std::string& b) { return folded(a) < folded(b); });
}

bool SameName(const std::string& a, const std::string& b) {
  return folded(a) == folded(b);
}

}  // namespace quillmoor
