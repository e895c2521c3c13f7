#include "profiles/NameOrder.h"

#include <algorithm>

#include "platform/CodePage.h"

namespace quillmoor {
namespace {

/// Names are ANSI text in their file, so the letters of the code page are the letters there are.
std::string folded(const std::string& name) {
  std::string ansi = ToAnsi(name);
  std::transform(ansi.begin(), ansi.end(), ansi.begin(), AnsiUpper);
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
