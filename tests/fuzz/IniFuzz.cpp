// A profile file is read, and a value written into it and a section taken out, without another line being
// touched. The input is the section's name, the value and the file, with a zero between.
#include <algorithm>

#include "Fuzz.h"
#include "platform/ini/PrivateProfile.h"
#include "platform/system/CodePage.h"
#include "support/TemporaryFolder.h"

namespace quillmoor {
namespace {

constexpr std::string_view kKey = "Folders";

/// The bytes of `from` that `into` lacks, between those at both ends that it has.
std::string_view lost(std::string_view from, std::string_view into) {
  const auto shorter = static_cast<std::ptrdiff_t>(std::min(from.size(), into.size()));
  const auto head = std::mismatch(from.begin(), from.begin() + shorter, into.begin()).first;
  const auto same = head - from.begin();
  const auto tail = std::mismatch(from.rbegin(), from.rbegin() + (shorter - same), into.rbegin()).first;
  return from.substr(static_cast<std::size_t>(same), static_cast<std::size_t>(tail.base() - head));
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
