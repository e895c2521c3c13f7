// A profile file of any bytes at all is read, and a value written into it and a section taken out, without
// another line being touched. The input is the section's name, the value and the file, with a zero between.
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "platform/ini/PrivateProfile.h"
#include "platform/system/CodePage.h"

namespace quillmoor {
namespace {

constexpr std::string_view kKey = "Folders";

void require(bool holds) {
  if (!holds) std::abort();
}

/// The file of this process, gone with it.
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

/// Without the byte order mark, which is no part of the first.
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

/// Lines that differ, between those at both ends that do not.
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

void check(std::string_view section, std::string_view value, std::string_view bytes, const OwnFile& file) {
  std::ofstream(file.path, std::ios::binary) << bytes;
  const std::string before = file.bytes();
  const std::vector<std::string> names = GetPrivateProfileSectionNames(file.path);
  for (const std::string& name : names) GetPrivateProfileString(name, kKey, file.path);

  const bool oneLine = (std::string(section) + std::string(value)).find_first_of("\r\n") == std::string::npos;
  require(WritePrivateProfileString(section, kKey, value, file.path) == oneLine);
  const std::string written = file.bytes();
  const Difference write = difference(before, written);
  if (!oneLine) return require(written == before);
  // A line replaced or added; before it, perhaps, a header, and a line that had no end.
  require(write.before <= 1 && write.after <= 3);
  std::string_view read = trimmed(value);
  if (read.size() > 1 && read.front() == read.back() && (read[0] == '"' || read[0] == '\''))
    read = read.substr(1, read.size() - 2);
  require(GetPrivateProfileString(section, kKey, file.path) == read);

  require(DeletePrivateProfileSection(section, file.path));
  const auto has = [&](const std::vector<std::string>& all) {
    return std::count_if(all.begin(), all.end(),
                         [&](const std::string& name) { return SameAnsiName(name, trimmed(section)); });
  };
  require(difference(written, file.bytes()).after == 0);
  require(has(GetPrivateProfileSectionNames(file.path)) == std::max<std::ptrdiff_t>(has(names), 1) - 1);
}

}  // namespace
}  // namespace quillmoor

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const quillmoor::OwnFile file;
  std::string_view rest(reinterpret_cast<const char*>(data), size);
  const auto next = [&] {
    const std::string_view part = rest.substr(0, rest.find('\0'));
    rest.remove_prefix(std::min(part.size() + 1, rest.size()));
    return part;
  };
  const std::string_view section = next(), value = next();
  quillmoor::check(section, value, rest, file);
  return 0;
}
