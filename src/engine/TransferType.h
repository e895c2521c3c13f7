// Text or bytes: which way a file is fetched, by the end of its name.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillmoor {

/// The stored list, split at each "|". Entries keep their case and their dot; "" gives one empty entry, which
/// matches nothing.
std::vector<std::string> LoadAsciiFilesTypes(std::string_view asciiExts);

/// "A" when the name ends with one of the extensions, else "I". The name counts in lower case and the
/// extensions as they stand, so one with a capital letter never matches.
const char* ChooseTransferType(std::string_view fileName, const std::vector<std::string>& asciiExtensions);

}  // namespace quillmoor
