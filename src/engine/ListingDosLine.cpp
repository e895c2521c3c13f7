#include <utility>

#include "engine/ListingLine.h"

namespace quillmoor::listing {
namespace {

/// "d" for a folder, "l" for a link or junction; 0 for any other word.
char typeOfTag(std::string_view word) {
  std::string upper(word);
  for (char& c : upper) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  if (upper == "<DIR>") return 'd';
  for (const char* const link : {"<JUNCTION>", "<SYMLINKD>", "<SYMLINK>", "<LINK>"}) {
    if (upper == link) return 'l';
  }
  return 0;
}

}  // namespace

std::optional<ListedLine> parseDosLine(std::string_view line, int yearNow) {
  if (line.empty() || !isDigit(line.front())) return std::nullopt;
  const Words words(line);
  auto date = readDosDate(words, yearNow);
  if (!date) return std::nullopt;
  const std::size_t kind = date->lastWord + 1;
  if (words.count <= kind) return std::nullopt;

  ListedLine listed;
  RemoteEntry& entry = listed.entry;
  std::string_view name;
  if (words[kind].starts_with('<')) {
    const char type = typeOfTag(words[kind]);
    if (type == 0) return std::nullopt;
    entry.type.assign(1, type);
    const auto end = static_cast<std::size_t>(words[kind].data() + words[kind].size() - line.data());
    // The column is padded to a fixed width; the padding does not belong to the name.
    constexpr std::size_t kColumn = 15;
    const std::size_t padding = kColumn - std::min(words[kind].size(), kColumn - 1);
    const std::size_t blanks = std::min(line.find_first_not_of(' ', end), line.size()) - end;
    name = line.substr(end + std::min(padding, blanks));
  } else {
    entry.type.assign(1, '-');
    if (!isSize(words[kind])) return std::nullopt;
    setSize(entry, words[kind]);
    name = nameAfter(line, words[kind]);
  }
  if (name.empty()) return std::nullopt;
  entry.name = name;
  listed.date = *std::move(date);
  entry.dateText = std::move(listed.date.text);
  return listed;
}

}  // namespace quillmoor::listing
