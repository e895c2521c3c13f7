// Any profile file can be read, and a value written to it and a section removed, without changing another
// line. The input is the section's name, the value and the file, separated by zero bytes.
#include <unistd.h>

#include <algorithm>

#include "Fuzz.h"
#include "platform/ini/PrivateProfile.h"
#include "platform/system/CodePage.h"
#include "support/TemporaryFolder.h"

namespace quillmoor {
namespace {

constexpr std::string_view kKey = "Folders";

void require(bool holds) {
  if (!holds) std::abort();
}

/// A file of this process, removed at its end.
struct OwnFile {
  std::filesystem::path folder =
      std::filesystem::temp_directory_path() / ("fuzz-ini-" + std::to_string(::getpid()));
  std::string path = (folder / "Profiles.ini").string();
  OwnFile() { std::filesystem::create_directory(folder); }
  ~OwnFile() { std::filesystem::remove_all(folder); }

  std::string bytes() const {
    std::ifstream stream(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(stream), {});
  }
};

/// Without the byte order mark.
std::vector<std::string> linesOf(std::string_view text) {
  std::vector<std::string> lines;
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  while (!text.empty()) {
    const std::size_t length = std::min(text.find('\n'), text.size() - 1) + 1;
    lines.emplace_back(text.substr(0, length));
    text.remove_prefix(length);
  }
  return lines;
}

/// Numbers of lines between the common lines at the beginning and those at the end.
struct Difference {
  std::size_t before, after;
};
Difference difference(std::string_view before, std::string_view after) {
  const auto a = linesOf(before), b = linesOf(after);
  const auto head = std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first - a.begin();
  const auto tail =
      std::mismatch(a.rbegin(), a.rend() - head, b.rbegin(), b.rend() - head).first - a.rbegin();
  const auto both = static_cast<std::size_t>(head + tail);
  return {a.size() - both, b.size() - both};
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\v\f";
  const auto first = std::min(text.find_first_not_of(kBlanks), text.size());
  return text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

void check(std::string_view section, std::string_view value, std::string_view before,
           const std::string& file) {
  testing::writeFile(file, before);
  const std::vector<std::string> names = GetPrivateProfileSectionNames(file);
  for (const std::string& name : names) GetPrivateProfileString(name, kKey, file);

  const bool oneLine = (std::string(section) + std::string(value)).find_first_of("\r\n") == std::string::npos;
  require(WritePrivateProfileString(section, kKey, value, file) == oneLine);
  const std::string written = testing::contentsOf(file);
  if (!oneLine) return require(written == before);
  // A line replaced or added; before it, perhaps, a header, and a line that had no end.
  require(lost(before, written).find('\n') == std::string_view::npos);
  const std::string_view added = lost(written, before);
  require(std::count(added.begin(), added.end(), '\n') <= 3);
  GetPrivateProfileString(section, kKey, file);
  require(DeletePrivateProfileSection(section, file));
  const auto has = [&](const std::vector<std::string>& all) {
    return std::count_if(all.begin(), all.end(),
                         [&](const std::string& name) { return SameAnsiName(name, trimmed(section)); });
  };
  require(lost(testing::contentsOf(file), written).empty());
  require(has(GetPrivateProfileSectionNames(file)) == std::max<std::ptrdiff_t>(has(names), 1) - 1);
}

}  // namespace
}  // namespace quillmoor

void quillmoor::tryInput(std::string_view input) {
  static const testing::TemporaryFolder folder;
  const auto next = [&] {
    const std::string_view part = input.substr(0, input.find('\0'));
    input.remove_prefix(std::min(part.size() + 1, input.size()));
    return part;
  };
  const std::string_view section = next(), value = next();
  check(section, value, input, (folder / "Profiles.ini").string());
}
