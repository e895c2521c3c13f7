// Chooses by a file's extension whether it is fetched as text or as bytes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillmoor {

/// Splits the stored list at each "|". Entries keep their case and their dot; "" returns one empty entry,
/// which matches nothing.
std::vector<std::string> LoadAsciiFilesTypes(std::string_view asciiExts);

/// "A" when the name ends with one of the extensions, else "I". The name is compared in lower case but the
/// extensions are not, so an extension with a capital letter never matches.
const char* ChooseTransferType(std::string_view fileName, const std::vector<std::string>& asciiExtensions);

}  // namespace quillmoor
