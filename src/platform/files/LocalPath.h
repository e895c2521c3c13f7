// How local paths are written on this platform, and how they are passed to the system.
#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <string_view>

namespace quillmoor {

/// "\" on Windows, "/" elsewhere.
extern const char kLocalSeparator;

/// The path up to and with its last separator, "" when it has none.
inline std::string FolderPart(const std::string& path) {
  return path.substr(0, path.find_last_of(kLocalSeparator == '/' ? "/" : "\\/") + 1);
}

/// The path of `name` in a folder, "" being the current one.
inline std::string PathIn(const std::string& folder, const std::string& name) {
  return FolderPart(folder) == folder ? folder + name : folder + kLocalSeparator + name;
}

/// Rules for what may be a file's name.
enum class LocalNameRules { posix, windows };
extern const LocalNameRules kLocalNameRules;

/// True under Windows rules for a path that begins with a server's name, as in "\\server\share"; blanks
/// before it are ignored.
inline bool IsNetworkPath(std::string_view path, LocalNameRules rules = kLocalNameRules) {
  path.remove_prefix(std::min(path.find_first_not_of(' '), path.size()));
  return rules == LocalNameRules::windows && path.starts_with("\\\\");
}

/// The same text for names that are one to the file systems of this platform: those of Windows ignore case.
std::string LocalNameKey(const std::string& name);

/// The path that a text names. On Windows the text is UTF-8, and bytes that are not are read in the ANSI code
/// page; elsewhere the bytes are the path's own. The one way from text to path: the standard library reads
/// text as ANSI on Windows.
std::filesystem::path LocalPath(const std::string& text);

/// The text of a path; the reverse of LocalPath.
std::string LocalPathText(const std::filesystem::path& path);

}  // namespace quillmoor
