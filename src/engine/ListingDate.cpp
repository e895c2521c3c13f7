#include "engine/ListingDate.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <vector>

namespace quillmoor {
namespace {

constexpr std::array<const char*, 12> kEnglish = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                  "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

struct MonthName {
  std::string_view name;  // lower case, without a final dot
  int month;
};

// What `ls` writes in German, French, Spanish, Italian, Dutch, Portuguese, Swedish, Danish, Polish and
// Russian where that differs from English.
constexpr MonthName kMonthNames[] = {
    {"janv", 1}, {"ene", 1},  {"gen", 1},  {"sty", 1},  {"янв", 1},  {"févr", 2}, {"fév", 2},  {"fev", 2},
    {"lut", 2},  {"фев", 2},  {"mär", 3},  {"mrz", 3},  {"märz", 3}, {"mars", 3}, {"mrt", 3},  {"maa", 3},
    {"мар", 3},  {"avr", 4},  {"abr", 4},  {"kwi", 4},  {"апр", 4},  {"mai", 5},  {"mag", 5},  {"mei", 5},
    {"maj", 5},  {"май", 5},  {"мая", 5},  {"juin", 6}, {"giu", 6},  {"juni", 6}, {"cze", 6},  {"июн", 6},
    {"juil", 7}, {"lug", 7},  {"juli", 7}, {"lip", 7},  {"июл", 7},  {"août", 8}, {"aoû", 8},  {"ago", 8},
    {"sie", 8},  {"авг", 8},  {"sept", 9}, {"set", 9},  {"wrz", 9},  {"сен", 9},  {"okt", 10}, {"ott", 10},
    {"out", 10}, {"paź", 10}, {"окт", 10}, {"lis", 11}, {"ноя", 11}, {"dez", 12}, {"déc", 12}, {"dic", 12},
    {"gru", 12}, {"дек", 12},
};

std::string lowered(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return lower;
}

std::optional<int> englishMonth(std::string_view name) {
  if (name.size() != 3) return std::nullopt;
  const std::string lower = lowered(name);
  for (std::size_t i = 0; i < kEnglish.size(); ++i) {
    if (lower == lowered(kEnglish[i])) return static_cast<int>(i) + 1;
  }
  return std::nullopt;
}

std::optional<int> number(std::string_view text) {
  int value = 0;
  const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || rest != text.data() + text.size() || value < 0) return std::nullopt;
  return value;
}

std::string withSingleBlanks(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    result += text[i];
    // One pass over the pairs and no more, on purpose: three blanks become two.
    if (text[i] == ' ' && i + 1 < text.size() && text[i + 1] == ' ') ++i;
  }
  return result;
}

std::vector<std::string_view> splitAtBlanks(std::string_view text) {
  std::vector<std::string_view> fields;
  for (;;) {
    const std::size_t end = text.find(' ');
    fields.push_back(text.substr(0, end));
    if (end == std::string_view::npos) return fields;
    text.remove_prefix(end + 1);
  }
}

}  // namespace

const char* EnglishMonth(int month) {
  return kEnglish.at(static_cast<std::size_t>(month - 1));
}

std::optional<int> MonthOfName(std::string_view name) {
  if (const auto month = englishMonth(name)) return month;
  std::string lower = lowered(name);
  if (lower.ends_with('.')) lower.pop_back();
  if (const auto month = englishMonth(lower)) return month;
  for (const MonthName& known : kMonthNames) {
    if (lower == known.name) return known.month;
  }
  constexpr std::string_view kEastAsian = "月";  // "1月" is January
  if (lower.ends_with(kEastAsian)) {
    const auto month = number(std::string_view(lower).substr(0, lower.size() - kEastAsian.size()));
    if (month && *month >= 1 && *month <= 12) return month;
  }
  return std::nullopt;
}

LocalDateTime ParseListingDate(std::string_view text, LocalDateTime now) {
  const std::string single = withSingleBlanks(text);
  const auto fields = splitAtBlanks(single);
  if (fields.size() < 3) return now;
  auto month = englishMonth(fields[0]);
  if (!month) month = number(fields[0]);
  const auto day = number(fields[1]);
  if (!month || !day) return now;

  LocalDateTimeParts parts{.month = *month, .day = *day, .hour = 12};
  const std::string_view last = fields[2];
  const std::size_t colon = last.find(':');
  if (colon == std::string_view::npos) {
    const auto year = number(last);
    if (!year || last.size() != 4) return now;
    parts.year = *year;
  } else {
    // A date ahead of now stays ahead, on purpose.
    parts.year = SplitLocalDateTime(now).year;
    const auto hour = number(last.substr(0, colon));
    const auto minute = number(last.substr(colon + 1));
    if (!hour || !minute) return now;
    parts.hour = *hour;
    parts.minute = *minute;
  }
  return MakeLocalDateTime(parts).value_or(now);
}

}  // namespace quillmoor
