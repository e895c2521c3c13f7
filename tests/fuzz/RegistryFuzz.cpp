// Any input is read as a registry file or raises RegistryFileError with a line, nothing else; and what was
// read, written again, reads back the same.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "platform/registry/RegistryFile.h"

void quillmoor::tryInput(std::string_view input) {
  std::vector<RegistryFileKey> keys;
  try {
    keys = parseRegistryFile(input);
  } catch (const RegistryFileError& error) {
    return require(error.line() != 0 && error.what()[0] != '\0');
  }
  // Outside the try: a file written by the program must be readable.
  if (!same(parseRegistryFile(formatRegistryFile(keys)), keys)) std::abort();
  return 0;
}
