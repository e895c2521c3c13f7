// A registry file, which is written so that it is read back the same; or a RegistryFileError with its line.
#include "Fuzz.h"
#include "platform/registry/RegistryFile.h"

void quillmoor::tryInput(std::string_view input) {
  std::vector<RegistryFileKey> keys;
  try {
    keys = parseRegistryFile(input);
  } catch (const RegistryFileError& error) {
    return require(error.line() != 0 && error.what()[0] != '\0');
  }
  // Outside the try: the program's own file must be one that it can read.
  const std::string text = formatRegistryFile(keys);
  const std::vector<RegistryFileKey> again = parseRegistryFile(text);
  require(again.size() == keys.size() && formatRegistryFile(again) == text);
  for (std::size_t i = 0; i < keys.size(); ++i) require(again[i].values.size() == keys[i].values.size());
}
