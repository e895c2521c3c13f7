// The private-profile functions: values of an INI file, read and written one at a time, the file never held
// open. All text here is ANSI, as it stands in the file.
//
// A file is lines: "[section]", "key=value", and others (comments behind ";", noise), which are left as they
// are. Names are compared without regard to case, and of several sections or keys of one name the first
// counts.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quillmoor {

/// Longest text that a read gives back; longer values are cut.
inline constexpr std::size_t kPrivateProfileBuffer = 100'000;

/// The value without the blanks around it and without one pair of quotes (single or double) around it. ""
/// when file, section or key are missing.
std::string GetPrivateProfileString(std::string_view section, std::string_view key, const std::string& file);

/// Names of the sections in the order of the file, as far as they fit into the buffer.
std::vector<std::string> GetPrivateProfileSectionNames(const std::string& file);

/// Writes "key=value", without blanks before the value: over the first such key of the section, whose name
/// stays spelled as it is, else behind its last line. A line that holds the value stays as it is; a missing
/// section is added at the end of the file, a missing file created. False when the file cannot be written; it
/// is then as before.
bool WritePrivateProfileString(std::string_view section, std::string_view key, std::string_view value,
                               const std::string& file);

/// Removes the first section of that name with all its lines. True also when there was none.
bool DeletePrivateProfileSection(std::string_view section, const std::string& file);

/// Runs `edit` on a copy of the file and, when it returns true, puts the copy in the file's place in one
/// step: several writes that are to be seen all or not at all. False when `edit` was or when a file could not
/// be written; the file is then as before.
bool EditPrivateProfile(const std::string& file, const std::function<bool(const std::string& copy)>& edit);

}  // namespace quillmoor
