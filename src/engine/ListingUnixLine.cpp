#include <algorithm>
#include <string>
#include <utility>

#include "engine/ListingLine.h"

namespace quillmoor::listing {
namespace {

bool isTypeLetter(char c) {
  return std::string_view("-dlbcpsD").find(c) != std::string_view::npos;
}

bool isModeLetter(char c) {
  switch (c) {
    case 'r':
    case 'w':
    case 'x':
    case 's':
    case 'S':
    case 't':
    case 'T':
    case 'l':
    case 'L':
    case '-':
      return true;
    default:
      return false;
  }
}

/// The nine letters of "rwxr-sr-t" as bits.
std::int32_t permissionsOf(std::string_view letters) {
  std::int32_t bits = 0;
  for (std::size_t i = 0; i < 9; ++i) {
    const char c = letters[i];
    const bool plain = c == 'r' || c == 'w' || c == 'x' || c == 's' || c == 't';
    if (plain) bits |= 0400 >> i;
    if (i % 3 == 2 && (c == 's' || c == 'S' || c == 't' || c == 'T')) bits |= 04000 >> (i / 3);
  }
  return bits;
}

/// NetWare's "[RWCEAFMS]", "[R----F--]".
bool isBracketedMode(std::string_view word) {
  return word.size() > 2 && word.front() == '[' && word.back() == ']' &&
         word.substr(1, word.size() - 2).find_first_not_of("SRWCEMFA-_") == std::string_view::npos;
}

/// "-rw-r--r--" with anything attached to it, or NetWare's "- [RWCEAFMS]". Returns the index of the word
/// after the mode; 0 when there is no mode.
std::size_t readMode(const Words& words, std::int32_t& permissions) {
  const std::string_view mode = words[0];
  if (mode.size() >= 10 && std::all_of(mode.begin() + 1, mode.begin() + 10, isModeLetter)) {
    // A line of dashes is more likely a separator than the mode of a file without permissions.
    if (mode.find_first_not_of('-') >= 10 && !isDigit(mode.back()) &&
        (words[1].empty() || !isDigit(words[1].front())))
      return 0;
    permissions = permissionsOf(mode.substr(1));
    return 1;
  }
  if (mode.size() == 1) return isBracketedMode(words[1]) ? 2 : 0;
  return isBracketedMode(mode.substr(std::min<std::size_t>(mode.size(), 1))) ? 1 : 0;
}

/// The line without the columns that `ls -i` and `ls -s` put in front of the mode.
std::string_view withoutFrontColumns(std::string_view line) {
  std::string_view rest = line;
  for (int columns = 0; columns < 2 && !rest.empty() && isDigit(rest.front()); ++columns) {
    const std::size_t end = rest.find(' ');
    if (end == std::string_view::npos || !isSize(rest.substr(0, end))) return line;
    rest.remove_prefix(std::min(rest.find_first_not_of(' ', end), rest.size()));
  }
  return rest;
}

/// Splits "name -> target". Either may itself contain an arrow; a link's size, if listed, is the length of
/// its target and shows which arrow separates them.
void splitLink(RemoteEntry& entry, std::string_view text) {
  constexpr std::string_view kArrow = " -> ";
  std::size_t at = text.find(kArrow, 1);  // a name has at least one byte
  if (at == std::string_view::npos) {
    entry.name = text;
    return;
  }
  const auto target = static_cast<std::uint64_t>(entry.sizeBytes);
  if (text.size() > kArrow.size() && text.size() - kArrow.size() > target) {
    const std::size_t bySize = text.size() - static_cast<std::size_t>(target) - kArrow.size();
    if (text.substr(bySize, kArrow.size()) == kArrow) at = bySize;
  }
  entry.name = text.substr(0, at);
  entry.linkTarget = text.substr(at + kArrow.size());
}

/// Owner columns: the words between the mode and the size. The first number is the link count, which may run
/// into the owner when columns are wide ("1000joe"); a group's name may contain blanks.
void setOwners(RemoteEntry& entry, const Words& words, std::size_t first, std::size_t end, bool linksSeen) {
  if (first == end) return;
  entry.user = words[first];
  if (!linksSeen) {
    const auto name = std::find_if_not(entry.user.begin(), entry.user.end(), isDigit);
    if (name != entry.user.end()) {
      entry.user.erase(entry.user.begin(), name);
    } else if (first + 1 < end) {
      entry.user = words[++first];
    }
  }
  if (first + 1 < end) entry.group = words.span(first + 1, end - 1);
}

/// The date and the index of the word before it, the size.
struct SizeAndDate {
  std::size_t size = 0;
  ListedDate date;
};

constexpr std::size_t kOwnerColumns = 3;  // links, user, group

/// The first text after a number that reads as a date.
std::optional<SizeAndDate> findDate(const Words& words, std::size_t first, int yearNow, bool anyMonth) {
  std::optional<SizeAndDate> found;
  for (std::size_t size = first; size + 1 < words.count; ++size) {
    if (found && size > first + kOwnerColumns) break;
    if (!isSize(words[size])) continue;
    auto date = readUnixDate(words, size + 1, yearNow, anyMonth);
    if (!date) continue;
    found = SizeAndDate{size, *std::move(date)};
    // Owner columns may look like a date ("1 jan 10 2048"): a second date then is the real one.
    if (size > first) break;
  }
  return found;
}

/// findDate for a line where a long owner or group leaves no blank before the size: "averylonggroup1024".
std::optional<SizeAndDate> findDateAfterGluedSize(const Words& words, std::size_t first, int yearNow) {
  const std::size_t most = std::min(first + kOwnerColumns, words.count);
  for (std::size_t glued = first + 1; glued < most; ++glued) {
    if (!isDigit(words[glued].back())) continue;
    if (auto date = readUnixDate(words, glued + 1, yearNow, false))
      return SizeAndDate{glued, *std::move(date)};
  }
  return std::nullopt;
}

std::optional<ListedLine> parseFromMode(std::string_view line, int yearNow) {
  const Words words(line);
  ListedLine listed;
  RemoteEntry& entry = listed.entry;
  entry.type.assign(1, line.front());
  const std::size_t first = readMode(words, entry.permissions);
  if (first == 0) return std::nullopt;
  auto found = findDate(words, first, yearNow, false);
  if (!found) found = findDate(words, first, yearNow, true);
  const bool glued = !found;
  if (!found) found = findDateAfterGluedSize(words, first, yearNow);
  if (!found) return std::nullopt;

  std::size_t ownersEnd = found->size;
  const std::string_view sizeWord = words[found->size];
  if (entry.type == "b" || entry.type == "c") {
    entry.sizeExact = false;
    if (ownersEnd > first && words[ownersEnd - 1].ends_with(',')) --ownersEnd;  // "1,   3"
  } else if (glued) {
    // Some of the digits may belong to the owner.
    setSize(entry, sizeWord.substr(sizeWord.find_last_not_of("0123456789") + 1));
    entry.sizeExact = false;
    ++ownersEnd;
  } else {
    setSize(entry, sizeWord);
  }
  setOwners(entry, words, first, ownersEnd, isDigit(words[0].back()) || first == 2);
  listed.date = std::move(found->date);
  entry.dateText = std::move(listed.date.text);
  const std::string_view dateEnd = words[listed.date.lastWord];
  std::string_view name = nameAfter(line, dateEnd);
  if (listed.date.padded && name.size() > 1 && name.front() == ' ') name.remove_prefix(1);
  if (name.empty()) return std::nullopt;
  if (listed.date.parts.form == DateForm::yearAndTime)
    listed.timeInName = name.size() - nameAfter(line, words[listed.date.lastWord + 1]).size();
  if (entry.type == "l") {
    splitLink(entry, name);
  } else {
    entry.name = name;
  }
  return listed;
}

}  // namespace

std::optional<ListedLine> parseUnixLine(std::string_view line, int yearNow) {
  if (line.empty()) return std::nullopt;
  if (isTypeLetter(line.front())) return parseFromMode(line, yearNow);
  const std::string_view rest = withoutFrontColumns(line);
  if (rest.size() == line.size() || rest.size() < 10 || !isTypeLetter(rest.front())) return std::nullopt;
  if (!std::all_of(rest.begin() + 1, rest.begin() + 10, isModeLetter)) return std::nullopt;
  return parseFromMode(rest, yearNow);
}

bool beginsLikeEntry(std::string_view line) {
  const std::string_view rest = withoutFrontColumns(line);
  const Words words(rest);
  std::int32_t permissions = 0;
  if (!rest.empty() && isTypeLetter(rest.front()) && readMode(words, permissions) != 0) return true;
  return readDosDate(words, 0).has_value();
}

}  // namespace quillmoor::listing
