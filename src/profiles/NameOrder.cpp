#include "profiles/NameOrder.h"

#include <algorithm>

#include "platform/system/CodePage.h"

// Names are ANSI text in their file, so only the letters of the code page count.

namespace quillmoor {

void SortNames(std::vector<std::string>& names) {
  std::stable_sort(names.begin(), names.end(), [](const std::string& a, const std::string& b) {
    return CompareAnsiNames(ToAnsi(a), ToAnsi(b)) < 0;
  });
}

bool SameName(const std::string& a, const std::string& b) {
  return SameAnsiName(ToAnsi(a), ToAnsi(b));
}

}  // namespace quillmoor
