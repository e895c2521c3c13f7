// The private-profile functions: read and write single values of an INI file, which is never kept open. All
// text here is ANSI, as in the file.
//
// A file has lines "[section]" and "key=value"; others (comments after ";", noise) are left unchanged. Names
// are case-insensitive, and of several sections or keys with one name the first counts.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quillmoor {

/// Maximum length of a value read; longer values are cut.
inline constexpr std::size_t kPrivateProfileBuffer = 100'000;

/// The value without surrounding whitespace and without one surrounding pair of quotes (single or double). ""
/// when file, section or key is missing.
std::string GetPrivateProfileString(std::string_view section, std::string_view key, const std::string& file);

/// Names of the sections in file order, as many as fit into the buffer.
std::vector<std::string> GetPrivateProfileSectionNames(const std::string& file);

/// Writes "key=value", without whitespace before the value: over the first such key of the section, whose
/// spelling is kept, else after the section's last line. A line that already has the value stays unchanged; a
/// missing section is added at the end of the file, a missing file created. False when the file cannot be
/// written; it is then unchanged.
bool WritePrivateProfileString(std::string_view section, std::string_view key, std::string_view value,
                               const std::string& file);

/// Removes the first section of that name with all its lines. True also when there is none.
bool DeletePrivateProfileSection(std::string_view section, const std::string& file);

/// Runs `edit` on a copy of the file and, when it returns true, replaces the file by the copy in one step:
/// several writes that become visible all together or not at all. False when `edit` returned false or a file
/// could not be written; the file is then unchanged.
bool EditPrivateProfile(const std::string& file, const std::function<bool(const std::string& copy)>& edit);

}  // namespace quillmoor
