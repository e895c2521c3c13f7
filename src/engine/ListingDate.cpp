#include "engine/ListingDate.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <vector>

#include "base/Ascii.h"

namespace quillmoor {
namespace {

constexpr std::array<const char*, 12> kEnglish = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                  "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

// Month names that `ls` writes in other languages, without a final dot: German, French, Spanish, Italian,
// Dutch, Portuguese, Scandinavian, Finnish, Polish, Czech, Hungarian, Romanian, Turkish, Greek, Russian,
// Ukrainian, and in Latin-1 where that differs. ASCII letters are in lower case, others as they occur. Each
// name is between two blanks.
constexpr std::array<std::string_view, 12> kOtherNames = {
    " janv ene gen tammi sty led ian oca Ιαν янв Янв січ Січ ",
    " févr fév fev helmi lut úno febr Şub Φεβ фев Фев лют Лют f\xE9vr ",
    " mär mrz märz mars mrt maa maalis bře márc Μαρ Μάρ мар Мар бер Бер m\xE4r m\xE4rz ",
    " avr avril abr huhti kwi dub ápr nis Απρ апр Апр кві Кві ",
    " mai mag mei maj touko kvě máj Μαΐ Μάι май мая Май тра Тра ",
    " juin giu juni kesä cze čen čer jún iun haz Ιουν Ιούν июн Июн чер Чер ",
    " juil lug juli heinä lip čec júl iul tem Ιουλ Ιούλ июл Июл лип Лип ",
    " août aoû ago elo sie srp ağu Αυγ Αύγ авг Авг сер Сер ao\xFBt ao\xFB ",
    " sept set syys wrz zář szept eyl Σεπ сен Сен вер Вер ",
    " okt ott out loka paź říj eki Οκτ окт Окт жов Жов ",
    " marras lis noi kas Νοε Νοέ ноя Ноя лис Лис ",
    " dez déc dic des joulu gru pro ara Δεκ дек Дек гру Гру d\xE9\x63 ",
};

constexpr std::size_t kLongestMonthName = 16;  // bytes

/// Three letters as one number, whatever their case.
constexpr std::uint32_t caselessKey(std::string_view letters) {
  std::uint32_t key = 0;
  for (const char c : letters) key = key << 8 | static_cast<unsigned char>(c | 0x20);
  return key;
}

std::optional<int> englishMonth(std::string_view name) {
  if (name.size() != 3) return std::nullopt;
  const std::uint32_t key = caselessKey(name);
  for (std::size_t i = 0; i < kEnglish.size(); ++i) {
    if (key == caselessKey(kEnglish[i])) return static_cast<int>(i) + 1;
  }
  return std::nullopt;
}

std::optional<int> number(std::string_view text) {
  int value = 0;
  const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || rest != text.data() + text.size() || value < 0) return std::nullopt;
  return value;
}

/// A number of at most two digits: every part of a date except the year.
std::optional<int> shortNumber(std::string_view text) {
  return text.size() <= 2 ? number(text) : std::nullopt;
}

/// Reads "12:34" or "12:34:56" into `parts`.
bool readTimeOfDay(std::string_view text, LocalDateTimeParts& parts) {
  const std::size_t colon = text.find(':');
  const std::string_view behind = text.substr(colon + 1);
  const std::size_t second = behind.find(':');
  const auto hour = shortNumber(text.substr(0, colon));
  const auto minute = shortNumber(behind.substr(0, second));
  const auto seconds = second == std::string_view::npos ? 0 : shortNumber(behind.substr(second + 1));
  if (!hour || !minute || !seconds) return false;
  parts.hour = *hour;
  parts.minute = *minute;
  parts.second = *seconds;
  return true;
}

std::string withSingleBlanks(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    result += text[i];
    // Deliberate: a single pass over pairs, so three blanks become two.
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
  if (name.size() > kLongestMonthName) return std::nullopt;
  if (const auto month = englishMonth(name)) return month;
  std::string lower = AsciiLower(name);
  if (lower.ends_with('.')) lower.pop_back();
  if (const auto month = englishMonth(lower)) return month;
  const std::string listed = ' ' + lower + ' ';
  for (std::size_t i = 0; i < kOtherNames.size(); ++i) {
    if (kOtherNames[i].find(listed) != std::string_view::npos) return static_cast<int>(i) + 1;
  }
  for (const std::string_view monthSign : {"月", "월"}) {  // "1月" is January
    if (!lower.ends_with(monthSign)) continue;
    const auto month = shortNumber(std::string_view(lower).substr(0, lower.size() - monthSign.size()));
    if (month && *month >= 1 && *month <= 12) return month;
  }
  return std::nullopt;
}

LocalDateTime ParseListingDate(std::string_view text, LocalDateTime now) {
  const std::string single = withSingleBlanks(text);
  const auto fields = splitAtBlanks(single);
  if (fields.size() < 3) return now;
  auto month = englishMonth(fields[0]);
  if (!month) month = shortNumber(fields[0]);
  const auto day = shortNumber(fields[1]);
  if (!month || !day) return now;

  LocalDateTimeParts parts{.month = *month, .day = *day, .hour = 12};
  const std::string_view last = fields[2];
  if (last.find(':') == std::string_view::npos) {
    const auto year = number(last);
    if (!year || last.size() != 4) return now;
    parts.year = *year;
  } else {
    // Deliberate: a date in the future stays in the future.
    parts.year = SplitLocalDateTime(now).year;
    if (!readTimeOfDay(last, parts)) return now;
  }
  return MakeLocalDateTime(parts).value_or(now);
}

}  // namespace quillmoor
