// INI helpers over the private-profile functions. All text is UTF-8 here and ANSI in the file.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace quillmoor::mIni {

/// The value, or "" for a missing key, section or file. Values are cut to the 100000-byte buffer.
std::string ReadValue(const std::string& section, const std::string& key, const std::string& file);

/// False when the file could not be written; it is then unchanged.
bool WriteValue(const std::string& section, const std::string& key, const std::string& value,
                const std::string& file);

/// Section names in file order; empty names may occur and are skipped by callers.
std::vector<std::string> ListSections(const std::string& file);

/// Removes the section with all its keys. False when the file could not be written.
bool DeleteSection(const std::string& section, const std::string& file);

/// Lets `edit` change a copy of the file, which then replaces the file atomically. False when `edit` returns
/// false or a file could not be written; the file is then unchanged.
bool EditWhole(const std::string& file, const std::function<bool(const std::string& copy)>& edit);

}  // namespace quillmoor::mIni
