#include "engine/ListingParser.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <optional>
#include <string_view>

#include "engine/ListingDate.h"

namespace quillmoor {
namespace {

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

bool isNumber(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), isDigit);
}

std::optional<int> smallNumber(std::string_view text) {
  int value = 0;
  const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (!isNumber(text) || error != std::errc() || rest != text.data() + text.size()) return std::nullopt;
  return value;
}

/// "1024", "1,234,567", or the major and minor number of a device. Servers that count in 32 bits list sizes
/// beyond 2 GB as negative.
bool isSize(std::string_view word) {
  if (word.starts_with('-')) word.remove_prefix(1);
  return !word.empty() && isDigit(word.front()) && isDigit(word.back()) &&
         std::all_of(word.begin(), word.end(), [](char c) { return isDigit(c) || c == ','; });
}

/// Of a word that isSize. What no 64 bits can hold is as large as can be.
std::int64_t sizeOf(std::string_view word) {
  std::string digits(word);
  std::erase(digits, ',');
  std::int64_t size = 0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), size);
  if (result.ec == std::errc::result_out_of_range) return std::numeric_limits<std::int64_t>::max();
  return size >= 0 ? size : std::max<std::int64_t>(size + (std::int64_t{1} << 32), 0);
}

void setSize(RemoteEntry& entry, std::int64_t size) {
  entry.sizeBytes = size;
  entry.size =
      static_cast<std::int32_t>(std::min<std::int64_t>(size, std::numeric_limits<std::int32_t>::max()));
}

/// The words at the beginning of a line. More than kMost do not matter: the date has come by then.
struct Words {
  static constexpr std::size_t kMost = 20;

  explicit Words(std::string_view line) {
    std::size_t at = 0;
    while (count < kMost) {
      at = line.find_first_not_of(' ', at);
      if (at == std::string_view::npos) break;
      const std::size_t end = std::min(line.find(' ', at), line.size());
      word[count++] = line.substr(at, end - at);
      at = end;
    }
  }
  std::string_view operator[](std::size_t i) const { return i < count ? word[i] : std::string_view(); }

  std::array<std::string_view, kMost> word;
  std::size_t count = 0;
};

/// Names begin behind the one blank that follows the column before; further blanks are theirs.
std::string_view nameBehind(std::string_view line, std::string_view column) {
  const auto behind = static_cast<std::size_t>(column.data() + column.size() - line.data());
  return line.substr(std::min(behind + 1, line.size()));
}

struct TimeOfDay {
  int hour = 0, minute = 0;
};

/// "9:30", "22:30", "22:30:15", "10:30AM", "12:05pm".
std::optional<TimeOfDay> readTime(std::string_view word) {
  const std::size_t colon = word.find(':');
  if (colon == std::string_view::npos || colon == 0 || colon > 2) return std::nullopt;
  auto hour = smallNumber(word.substr(0, colon));
  const auto minute = smallNumber(word.substr(colon + 1, 2));
  if (!hour || !minute || word.size() < colon + 3 || *minute > 59) return std::nullopt;
  const std::string_view rest = word.substr(colon + 3);
  if (rest.size() == 2 && (rest[1] | 0x20) == 'm' && ((rest[0] | 0x20) == 'a' || (rest[0] | 0x20) == 'p')) {
    if (*hour < 1 || *hour > 12) return std::nullopt;
    *hour = *hour % 12 + ((rest[0] | 0x20) == 'p' ? 12 : 0);
  } else if (!rest.empty() && rest[0] != ':') {
    return std::nullopt;
  }
  if (*hour > 23) return std::nullopt;
  return TimeOfDay{*hour, *minute};
}

/// Of files, that is: "1024" behind an owner called "Jan 15" is a size.
bool isYear(std::string_view word) {
  return word.size() == 4 && isNumber(word) && (word.starts_with("19") || word.starts_with("20"));
}

bool isDay(std::string_view word) {
  const auto day = smallNumber(word);
  return word.size() <= 2 && day && *day >= 1 && *day <= 31;
}

std::string twoDigits(int value) {
  return {static_cast<char>('0' + value / 10), static_cast<char>('0' + value % 10)};
}

std::string timeText(const TimeOfDay& time) {
  return twoDigits(time.hour) + ":" + twoDigits(time.minute);
}

/// A date of which everything is known, in the form that ParseListingDate takes for the same day: a text with
/// a time of day means the year that it is now.
std::string composedDate(int year, int month, int day, const std::optional<TimeOfDay>& time, int yearNow) {
  std::string text = EnglishMonth(month);
  text.append(" ").append(std::to_string(day)).append(" ");
  if (time && year == yearNow) return text + timeText(*time);
  return text + std::to_string(year);
}

struct FoundDate {
  std::string text;
  std::size_t lastWord = 0;
  bool padded = false;  // a blank more than usual stands before the name
};

/// Letters of whatever language; with a final dot where months are abbreviated so.
bool isMonthLike(std::string_view word) {
  if (word.ends_with('.')) word.remove_suffix(1);
  return !word.empty() && std::all_of(word.begin(), word.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || static_cast<unsigned char>(c) >= 0x80;
  });
}

/// The English name of the month, or with `anyWord` what the server calls it: a file must not go missing for
/// its month's sake, and a date that nobody can read is one that ParseListingDate knows how to take.
std::string monthText(std::string_view word, bool anyWord) {
  if (const auto month = MonthOfName(word)) return EnglishMonth(*month);
  return std::string(anyWord && isMonthLike(word) ? word : std::string_view());
}

/// "Jan 15 12:34", "Jan 15 2009", "15 Jan 12:34", "15 Jan 2009"; "1月 15日", "15. Jan".
std::optional<FoundDate> readNamedDate(const Words& words, std::size_t at, bool anyMonth) {
  const std::string_view last = words[at + 2];
  const auto time = readTime(last);
  if (!time && !isYear(last)) return std::nullopt;
  std::string_view day = words[at + 1];
  std::string text = monthText(words[at], anyMonth);
  if (text.empty()) {
    text = monthText(words[at + 1], anyMonth);
    day = words[at];
  }
  for (const std::string_view ordinal : {".", "日", "일"}) {
    if (day.ends_with(ordinal)) day.remove_suffix(ordinal.size());
  }
  if (text.empty() || !isDay(day)) return std::nullopt;
  text.append(" ").append(std::to_string(*smallNumber(day))).append(" ");
  if (time) {
    text.append(timeText(*time));
  } else {
    text.append(last);
  }
  return FoundDate{std::move(text), at + 2};
}

/// "2009-01-15 12:34", with seconds and zone if listed; "01-15 12:34"; "2009-01-15", which is then padded.
std::optional<FoundDate> readIsoDate(const Words& words, std::size_t at, int yearNow) {
  std::string_view word = words[at];
  std::optional<int> year;
  if (word.size() == 10 && word[4] == '-' && isYear(word.substr(0, 4))) {
    year = smallNumber(word.substr(0, 4));
    word.remove_prefix(5);
  }
  if (word.size() != 5 || word[2] != '-') return std::nullopt;
  const auto month = smallNumber(word.substr(0, 2));
  const auto time = readTime(words[at + 1]);
  if (!month || *month < 1 || *month > 12 || !isDay(word.substr(3)) || (!time && !year)) return std::nullopt;
  FoundDate found{composedDate(year.value_or(yearNow), *month, *smallNumber(word.substr(3)), time, yearNow),
                  at};
  if (!time) {
    found.padded = true;
    return found;
  }
  const std::string_view zone = words[at + 2];
  const bool hasZone = zone.size() == 5 && (zone[0] == '+' || zone[0] == '-') && isNumber(zone.substr(1));
  found.lastWord = at + (hasZone ? 2 : 1);
  return found;
}

bool isModeLetter(char c) {
  return std::string_view("rwxsStTlL-").find(c) != std::string_view::npos;
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

/// Cuts "name -> target". Either may hold an arrow of its own; the size of a link is the length of its target
/// and tells which arrow it is, where the server gives it.
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

/// Owner columns: the words between the mode and the size. The first number is the count of links, which wide
/// columns glue to the owner ("1000joe"); a group's name may hold blanks.
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
  if (first + 1 < end) {
    const char* const start = words[first + 1].data();
    entry.group.assign(start,
                       static_cast<std::size_t>(words[end - 1].data() + words[end - 1].size() - start));
  }
}

/// The date and the index of the word before it, the size.
struct SizeAndDate {
  std::size_t size = 0;
  FoundDate date;
};

/// The first thing that looks like a date behind a number, if something follows it.
std::optional<SizeAndDate> findDate(const Words& words, std::size_t first, int yearNow, bool anyMonth) {
  constexpr std::size_t kOwnerColumns = 3;  // links, user, group
  std::optional<SizeAndDate> found;
  for (std::size_t size = first; size + 1 < words.count; ++size) {
    if (found && size > first + kOwnerColumns) break;
    if (!isSize(words[size])) continue;
    auto date = readNamedDate(words, size + 1, anyMonth);
    if (!date) date = readIsoDate(words, size + 1, yearNow);
    if (!date) continue;
    found = SizeAndDate{size, *std::move(date)};
    // Before any owner it may be the owners' columns that look so ("1 jan 10 2048"): a second date tells.
    if (size > first) break;
  }
  return found;
}

/// "-rw-r--r--" with what is glued to it, or NetWare's "- [RWCEAFMS]". Gives the index of the word behind, 0
/// when that is no mode.
std::size_t readMode(const Words& words, std::int32_t& permissions) {
  const std::string_view mode = words[0];
  if (mode.size() >= 10 && std::all_of(mode.begin() + 1, mode.begin() + 10, isModeLetter)) {
    permissions = permissionsOf(mode.substr(1));
    return 1;
  }
  if (mode.size() == 1 && words[1].starts_with('[')) return 2;
  return mode.size() > 1 && mode[1] == '[' ? 1 : 0;
}

std::optional<RemoteEntry> parseUnixLine(std::string_view line, int yearNow) {
  if (line.empty() || std::string_view("-dlbcpsD").find(line[0]) == std::string_view::npos)
    return std::nullopt;
  const Words words(line);
  RemoteEntry entry;
  entry.type.assign(1, line.front());
  const std::size_t first = readMode(words, entry.permissions);
  if (first == 0) return std::nullopt;
  auto found = findDate(words, first, yearNow, false);
  if (!found) found = findDate(words, first, yearNow, true);
  if (!found) return std::nullopt;

  std::size_t ownersEnd = found->size;
  if (entry.type == "b" || entry.type == "c") {
    if (ownersEnd > first && words[ownersEnd - 1].ends_with(',')) --ownersEnd;  // "1,   3"
  } else {
    setSize(entry, sizeOf(words[found->size]));
  }
  setOwners(entry, words, first, ownersEnd, isDigit(words[0].back()) || first == 2);
  entry.dateText = std::move(found->date.text);
  std::string_view name = nameBehind(line, words[found->date.lastWord]);
  if (found->date.padded && name.size() > 1 && name.front() == ' ') name.remove_prefix(1);
  if (name.empty()) return std::nullopt;
  if (entry.type == "l") {
    splitLink(entry, name);
  } else {
    entry.name = name;
  }
  return entry;
}

/// "01-15-09", "01-15-2009", "01/15/2009": month, day, year; the day first where it can be no month.
/// "2009-01-15".
struct CalendarDay {
  int year = 0, month = 0, day = 0;
};
std::optional<CalendarDay> readDosDate(std::string_view word) {
  std::string turned;
  if (word.size() == 10 && word[4] == '-' && word[7] == '-') {
    turned.append(word.substr(5)).append("-").append(word.substr(0, 4));
    word = turned;
  }
  if ((word.size() != 8 && word.size() != 10) || word[2] != word[5] || (word[2] != '-' && word[2] != '/')) {
    return std::nullopt;
  }
  auto month = smallNumber(word.substr(0, 2));
  auto day = smallNumber(word.substr(3, 2));
  auto year = smallNumber(word.substr(6));
  if (!month || !day || !year) return std::nullopt;
  if (*month > 12) std::swap(month, day);
  if (*month < 1 || *month > 12 || *day < 1 || *day > 31) return std::nullopt;
  if (word.size() == 8) *year += *year < 70 ? 2000 : 1900;
  return CalendarDay{*year, *month, *day};
}

std::optional<RemoteEntry> parseDosLine(std::string_view line, int yearNow) {
  const Words words(line);
  const auto date = readDosDate(words[0]);
  if (!date) return std::nullopt;
  auto time = readTime(words[1]);
  std::size_t kind = 2;
  if (time && (words[2] == "AM" || words[2] == "PM")) {
    time = readTime(std::string(words[1]) + std::string(words[2]));
    kind = 3;
  }
  if (!time || words.count <= kind) return std::nullopt;

  RemoteEntry entry;
  std::string_view name;
  if (words[kind].starts_with('<') && words[kind].ends_with('>')) {
    entry.type.assign(1, words[kind] == "<DIR>" ? 'd' : 'l');  // junctions and links lead elsewhere
    const auto behind = static_cast<std::size_t>(words[kind].data() + words[kind].size() - line.data());
    // The column is padded to a width of its own: that much is not the name's.
    constexpr std::size_t kColumn = 15;
    const std::size_t padding = kColumn - std::min(words[kind].size(), kColumn - 1);
    const std::size_t blanks = std::min(line.find_first_not_of(' ', behind), line.size()) - behind;
    name = line.substr(behind + std::min(padding, blanks));
  } else {
    entry.type.assign(1, '-');
    if (!isSize(words[kind])) return std::nullopt;
    setSize(entry, sizeOf(words[kind]));
    name = nameBehind(line, words[kind]);
  }
  if (name.empty()) return std::nullopt;
  entry.name = name;
  entry.dateText = composedDate(date->year, date->month, date->day, time, yearNow);
  return entry;
}

bool isBlank(std::string_view line) {
  return line.find_first_not_of(" \t") == std::string_view::npos;
}

/// What `ls` writes around its lines: blank ones, "total 12" in whatever language, "folder:".
bool isCustomaryNoise(std::string_view line) {
  if (isBlank(line) || line.ends_with(':')) return true;
  const Words words(line);
  return words.count == 2 && isMonthLike(words[0]) && isDigit(words[1][0]);
}

}  // namespace

RemoteListing ParseListing(std::string text, LocalDateTime now, const Pump& pump) {
  RemoteListing listing;
  listing.text = std::move(text);
  const int yearNow = SplitLocalDateTime(now).year;
  bool unreadable = false;
  bool afterBlank = false;
  std::string_view rest = listing.text;
  for (std::size_t lines = 1; !rest.empty(); ++lines) {
    constexpr std::size_t kLinesBetweenPumps = 4096;  // some two milliseconds
    if (pump && lines % kLinesBetweenPumps == 0) pump();
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    std::string_view line = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    while (line.ends_with('\r')) line.remove_suffix(1);
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));

    auto entry = parseUnixLine(line, yearNow);
    ListingFormat format = ListingFormat::unixStyle;
    if (!entry) {
      entry = parseDosLine(line, yearNow);
      format = ListingFormat::dosStyle;
    }
    if (entry) {
      if (listing.entries.empty()) listing.format = format;
      listing.entries.push_back(*std::move(entry));
    } else if (afterBlank && line.ends_with(':') && !listing.entries.empty()) {
      break;  // a recursive listing: what follows lies in another folder
    } else {
      unreadable = unreadable || !isCustomaryNoise(line);
    }
    afterBlank = isBlank(line);
  }
  if (listing.entries.empty() && unreadable) listing.format = ListingFormat::neither;
  return listing;
}

}  // namespace quillmoor
