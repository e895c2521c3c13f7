// Any bytes at all are a registry file or a RegistryFileError with its line, never anything else; and what
// was understood is written so that it is read back the same, once and for all.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "platform/registry/RegistryFile.h"

namespace quillmoor {
namespace {

bool same(const std::vector<RegistryFileKey>& a, const std::vector<RegistryFileKey>& b) {
  const auto sameValue = [](const RegistryFileValue& x, const RegistryFileValue& y) {
    return x.name == y.name && x.data == y.data;
  };
  const auto sameKey = [&](const RegistryFileKey& x, const RegistryFileKey& y) {
    return x.path == y.path &&
           std::equal(x.values.begin(), x.values.end(), y.values.begin(), y.values.end(), sameValue);
  };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), sameKey);
}

}  // namespace
}  // namespace quillmoor

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quillmoor;
  std::vector<RegistryFileKey> keys;
  try {
    keys = parseRegistryFile(std::string_view(reinterpret_cast<const char*>(data), size));
  } catch (const RegistryFileError& error) {
    if (error.line() == 0 || error.what()[0] == '\0') std::abort();
    return 0;
  }
  // Outside the try: the program's own file must be one that it can read.
  if (!same(parseRegistryFile(formatRegistryFile(keys)), keys)) std::abort();
  return 0;
}
