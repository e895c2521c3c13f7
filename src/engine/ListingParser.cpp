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

/// Digits as a size; one that no 64 bits can hold is as large as can be.
std::int64_t sizeOf(std::string_view digits) {
  std::int64_t size = 0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), size);
  return result.ec == std::errc::result_out_of_range ? std::numeric_limits<std::int64_t>::max() : size;
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

/// A date of which everything is known, in the form that ParseListingDate takes for the same day: a text with
/// a time of day means the year that it is now.
std::string composedDate(int year, int month, int day, const std::optional<TimeOfDay>& time, int yearNow) {
  std::string text = EnglishMonth(month);
  text.append(" ").append(std::to_string(day)).append(" ");
  if (time && year == yearNow) return text + twoDigits(time->hour) + ":" + twoDigits(time->minute);
  return text + std::to_string(year);
}

struct FoundDate {
  std::string text;
  std::size_t lastWord = 0;
};

/// "Jan 15 12:34", "Jan 15 2009", "15 Jan 12:34", "15 Jan 2009".
std::optional<FoundDate> readNamedDate(const Words& words, std::size_t at) {
  std::string_view day = words[at + 1];
  auto month = MonthOfName(words[at]);
  if (!month) {
    month = MonthOfName(words[at + 1]);
    day = words[at];
  }
  if (day.ends_with('.')) day.remove_suffix(1);  // "15." where days are ordinals
  const std::string_view last = words[at + 2];
  if (!month || !isDay(day) || !(isYear(last) || readTime(last))) return std::nullopt;
  std::string text = EnglishMonth(*month);
  text.append(" ").append(std::to_string(*smallNumber(day))).append(" ").append(last);
  return FoundDate{std::move(text), at + 2};
}

/// "2009-01-15 12:34", with seconds and zone if listed; "01-15 12:34".
std::optional<FoundDate> readIsoDate(const Words& words, std::size_t at, int yearNow) {
  std::string_view word = words[at];
  int year = yearNow;
  if (word.size() == 10 && word[4] == '-' && isYear(word.substr(0, 4))) {
    year = *smallNumber(word.substr(0, 4));
    word.remove_prefix(5);
  }
  if (word.size() != 5 || word[2] != '-') return std::nullopt;
  const auto month = smallNumber(word.substr(0, 2));
  const auto time = readTime(words[at + 1]);
  if (!month || *month < 1 || *month > 12 || !isDay(word.substr(3)) || !time) return std::nullopt;
  const std::string_view zone = words[at + 2];
  const bool hasZone = zone.size() == 5 && (zone[0] == '+' || zone[0] == '-') && isNumber(zone.substr(1));
  return FoundDate{composedDate(year, *month, *smallNumber(word.substr(3)), time, yearNow),
                   at + 1 + (hasZone ? 1 : 0)};
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
  std::size_t at = text.find(kArrow);
  if (at == std::string_view::npos) {
    entry.name = text;
    return;
  }
  const auto target = static_cast<std::uint64_t>(entry.sizeBytes);
  if (text.size() > target + kArrow.size()) {
    const std::size_t bySize = text.size() - static_cast<std::size_t>(target) - kArrow.size();
    if (text.substr(bySize, kArrow.size()) == kArrow) at = bySize;
  }
  entry.name = text.substr(0, at);
  entry.linkTarget = text.substr(at + kArrow.size());
}

/// Owner columns: the words between the mode and the size. The first number is the count of links; a group's
/// name may hold blanks.
void setOwners(RemoteEntry& entry, const Words& words, std::size_t first, std::size_t end) {
  if (end - first >= 2 && isNumber(words[first])) ++first;
  if (first < end) entry.user = words[first];
  if (first + 1 < end) {
    const char* const start = words[first + 1].data();
    entry.group.assign(start,
                       static_cast<std::size_t>(words[end - 1].data() + words[end - 1].size() - start));
  }
}

std::optional<RemoteEntry> parseUnixLine(std::string_view line, int yearNow) {
  if (line.empty() || std::string_view("-dlbcpsD").find(line[0]) == std::string_view::npos)
    return std::nullopt;
  RemoteEntry entry;
  entry.type = line.substr(0, 1);
  const Words words(line);
  std::size_t first = 1;  // word behind the mode
  if (words[0].size() >= 10 && std::all_of(words[0].begin() + 1, words[0].begin() + 10, isModeLetter)) {
    entry.permissions = permissionsOf(words[0].substr(1));
  } else if (words[0].size() == 1 && words[1].starts_with('[')) {
    first = 2;  // NetWare: rights in brackets
  } else {
    return std::nullopt;
  }

  // The date is the first thing that looks like one behind a number, the size.
  for (std::size_t at = first + 1; at < words.count; ++at) {
    const std::string_view size = words[at - 1];
    const bool device = size.find(',') != std::string_view::npos;  // "1,3": major, minor
    if (!isNumber(size) && !device) continue;
    auto date = readNamedDate(words, at);
    if (!date) date = readIsoDate(words, at, yearNow);
    if (!date) continue;
    std::size_t ownersEnd = at - 1;
    if (ownersEnd > first && words[ownersEnd - 1].ends_with(',')) {
      --ownersEnd;  // "1,   3"
    } else if (!device) {
      setSize(entry, sizeOf(size));
    }
    setOwners(entry, words, first, ownersEnd);
    entry.dateText = std::move(date->text);
    const std::string_view name = nameBehind(line, words[date->lastWord]);
    if (name.empty()) return std::nullopt;
    if (entry.type == "l") {
      splitLink(entry, name);
    } else {
      entry.name = name;
    }
    return entry;
  }
  return std::nullopt;
}

/// "01-15-09", "01-15-2009", "01/15/2009": month, day, year.
struct CalendarDay {
  int year = 0, month = 0, day = 0;
};
std::optional<CalendarDay> readDosDate(std::string_view word) {
  if ((word.size() != 8 && word.size() != 10) || word[2] != word[5] || (word[2] != '-' && word[2] != '/')) {
    return std::nullopt;
  }
  const auto month = smallNumber(word.substr(0, 2));
  const auto day = smallNumber(word.substr(3, 2));
  auto year = smallNumber(word.substr(6));
  if (!month || !day || !year || *month < 1 || *month > 12 || *day < 1 || *day > 31) return std::nullopt;
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
    entry.type = words[kind] == "<DIR>" ? "d" : "l";  // junctions and links lead elsewhere
    const auto behind = static_cast<std::size_t>(words[kind].data() + words[kind].size() - line.data());
    // The column is padded to a width of its own: that much is not the name's.
    constexpr std::size_t kColumn = 15;
    const std::size_t padding = kColumn - std::min(words[kind].size(), kColumn - 1);
    const std::size_t blanks = std::min(line.find_first_not_of(' ', behind), line.size()) - behind;
    name = line.substr(behind + std::min(padding, blanks));
  } else {
    entry.type = "-";
    std::string digits(words[kind]);
    std::erase(digits, ',');
    if (!isNumber(digits)) return std::nullopt;
    setSize(entry, sizeOf(digits));
    name = nameBehind(line, words[kind]);
  }
  if (name.empty()) return std::nullopt;
  entry.name = name;
  entry.dateText = composedDate(date->year, date->month, date->day, time, yearNow);
  return entry;
}

/// What `ls` writes around its lines.
bool isCustomaryNoise(std::string_view line) {
  if (line.find_first_not_of(" \t") == std::string_view::npos) return true;
  if (line.starts_with("total ")) return isNumber(Words(line)[1]);
  return line.ends_with(':');
}

}  // namespace

RemoteListing ParseListing(std::string text, LocalDateTime now) {
  RemoteListing listing;
  listing.text = std::move(text);
  const int yearNow = SplitLocalDateTime(now).year;
  bool unreadable = false;
  std::string_view rest = listing.text;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    std::string_view line = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    while (line.ends_with('\r')) line.remove_suffix(1);

    auto entry = parseUnixLine(line, yearNow);
    ListingFormat format = ListingFormat::unixStyle;
    if (!entry) {
      entry = parseDosLine(line, yearNow);
      format = ListingFormat::dosStyle;
    }
    if (!entry) {
      unreadable = unreadable || !isCustomaryNoise(line);
      continue;
    }
    if (listing.entries.empty()) listing.format = format;
    listing.entries.push_back(*std::move(entry));
  }
  if (listing.entries.empty() && unreadable) listing.format = ListingFormat::neither;
  return listing;
}

}  // namespace quillmoor
