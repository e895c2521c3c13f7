#include "platform/ini/PrivateProfile.h"

#include <algorithm>
#include <optional>

#include "platform/ini/PrivateProfileFile.h"
#include "platform/system/CodePage.h"

namespace quillmoor {
namespace {

constexpr std::string_view kBlanks = " \t\r\v\f";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string_view unquoted(std::string_view value) {
  if (value.size() < 2 || value.front() != value.back()) return value;
  if (value.front() != '"' && value.front() != '\'') return value;
  return value.substr(1, value.size() - 2);
}

/// A line of the file without its line end. Lines of other programs may end in LF alone and keep it.
struct Line {
  std::size_t begin = 0;  // in the file's text
  std::size_t end = 0;    // after the line end
  std::string_view text;

  /// Name of the section that begins here. Text after the last bracket is ignored.
  std::optional<std::string_view> section() const {
    const std::string_view line = trimmed(text);
    if (!line.starts_with('[')) return std::nullopt;
    const auto close = line.rfind(']');
    if (close == std::string_view::npos) return std::nullopt;
    return trimmed(line.substr(1, close - 1));
  }
  std::optional<std::string_view> key() const {
    const std::string_view line = trimmed(text);
    const auto equals = line.find('=');
    if (line.empty() || line[0] == ';' || equals == std::string_view::npos) return std::nullopt;
    return trimmed(line.substr(0, equals));
  }
  std::string_view written() const { return trimmed(text.substr(text.find('=') + 1)); }
  std::string_view value() const { return unquoted(written()); }
};

std::vector<Line> linesOf(std::string_view text) {
  std::vector<Line> lines;
  std::size_t at = text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
  while (at < text.size()) {
    const std::size_t feed = std::min(text.find('\n', at), text.size());
    lines.push_back({at, std::min(feed + 1, text.size()), text.substr(at, feed - at)});
    at = feed + 1;
  }
  return lines;
}

/// The lines of a section: its header and the first line after it. Both `lines.size()` when it is missing.
struct SectionRange {
  std::size_t header, end;
};
SectionRange findSection(const std::vector<Line>& lines, std::string_view name) {
  const auto isHeader = [](const Line& line) { return line.section().has_value(); };
  const auto header = std::find_if(lines.begin(), lines.end(), [&](const Line& line) {
    const auto section = line.section();
    return section && SameAnsiName(*section, trimmed(name));
  });
  if (header == lines.end()) return {lines.size(), lines.size()};
  const auto end = std::find_if(header + 1, lines.end(), isHeader);
  return {static_cast<std::size_t>(header - lines.begin()), static_cast<std::size_t>(end - lines.begin())};
}

}  // namespace

std::string GetPrivateProfileString(std::string_view section, std::string_view key, const std::string& file) {
  const auto text = ReadProfileFile(file);
  if (!text) return "";
  const auto lines = linesOf(*text);
  const SectionRange range = findSection(lines, section);
  for (std::size_t i = range.header + 1; i < range.end; ++i) {
    const auto name = lines[i].key();
    if (name && SameAnsiName(*name, trimmed(key))) {
      return std::string(lines[i].value().substr(0, kPrivateProfileBuffer - 1));
    }
  }
  return "";
}

std::vector<std::string> GetPrivateProfileSectionNames(const std::string& file) {
  std::vector<std::string> names;
  const auto text = ReadProfileFile(file);
  if (!text) return names;
  std::size_t left = kPrivateProfileBuffer - 2;  // each name has a terminator, the list another
  for (const Line& line : linesOf(*text)) {
    const auto name = line.section();
    if (!name) continue;
    if (name->size() + 1 > left) break;
    left -= name->size() + 1;
    names.emplace_back(*name);
  }
  return names;
}

bool WritePrivateProfileString(std::string_view section, std::string_view key, std::string_view value,
                               const std::string& file) {
  // A line break would start a new line with arbitrary content.
  for (const std::string_view part : {section, key, value}) {
    if (part.find_first_of("\r\n") != std::string_view::npos) return false;
  }
  const auto text = ReadProfileFile(file);
  if (!text) return false;
  // Trailing whitespace of the value is written, leading whitespace is not.
  value.remove_prefix(std::min(value.find_first_not_of(kBlanks), value.size()));
  std::string entry(trimmed(key));
  entry.append("=").append(value).append("\r\n");
  const auto lines = linesOf(*text);
  const SectionRange range = findSection(lines, section);

  if (range.header == lines.size()) {
    std::string changed = *text;
    if (!changed.empty() && changed.back() != '\n') changed += "\r\n";
    changed.append("[").append(trimmed(section)).append("]\r\n").append(entry);
    return WriteProfileFile(file, *text, changed);
  }
  std::size_t insertAt = lines[range.header].end;
  for (std::size_t i = range.header + 1; i < range.end; ++i) {
    const auto name = lines[i].key();
    if (name && SameAnsiName(*name, trimmed(key))) {
      if (lines[i].written() == value) return true;
      std::string changed = text->substr(0, lines[i].begin);
      changed.append(*name).append("=").append(value).append("\r\n");  // keeps the spelling of the key
      return WriteProfileFile(file, *text, changed.append(*text, lines[i].end));
    }
    // Blank lines at the end of a section stay before the next one.
    if (!trimmed(lines[i].text).empty()) insertAt = lines[i].end;
  }
  std::string changed = text->substr(0, insertAt);
  if (changed.back() != '\n') changed += "\r\n";
  return WriteProfileFile(file, *text, changed.append(entry).append(*text, insertAt));
}

bool DeletePrivateProfileSection(std::string_view section, const std::string& file) {
  const auto text = ReadProfileFile(file);
  if (!text) return false;
  const auto lines = linesOf(*text);
  const SectionRange range = findSection(lines, section);
  if (range.header == lines.size()) return true;
  std::string changed = text->substr(0, lines[range.header].begin);
  if (range.end < lines.size()) changed.append(*text, lines[range.end].begin);
  return WriteProfileFile(file, *text, changed);
}

}  // namespace quillmoor
