// How local paths are written on this platform, and how they are handed to the system.
#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <string_view>

namespace quillmoor {

/// "\" on Windows, "/" elsewhere.
extern const char kLocalSeparator;

/// Rules for what may be a file's name.
enum class LocalNameRules { posix, windows };
extern const LocalNameRules kLocalNameRules;

/// The path begins with a server's name, as in "\\server\share"; blanks before it do not count. Only where
/// Windows rules hold.
inline bool IsNetworkPath(std::string_view path, LocalNameRules rules = kLocalNameRules) {
  path.remove_prefix(std::min(path.find_first_not_of(' '), path.size()));
  return rules == LocalNameRules::windows && path.starts_with("\\\\");
}

/// The same text for names that file systems of this platform take for one: on Windows they do not regard
/// case.
std::string LocalNameKey(const std::string& name);

/// The path that a text names. On Windows the text is UTF-8, and bytes that are none are read in the ANSI
/// code page; elsewhere the bytes are the path's own. The one way from text to path: the standard library's
/// own reads text as Windows does not write it.
std::filesystem::path LocalPath(const std::string& text);

/// The text of a path; the reverse of LocalPath.
std::string LocalPathText(const std::filesystem::path& path);

}  // namespace quillmoor
