#include "engine/ListingDateColumn.h"

#include <utility>

#include "engine/ListingDate.h"

namespace quillmoor::listing {
namespace {

/// A year that a file can have: "1024" after an owner called "Jan 15" is a size.
bool isYear(std::string_view word) {
  return word.size() == 4 && isNumber(word) && (word.starts_with("19") || word.starts_with("20"));
}

bool isDay(std::string_view word) {
  const auto day = smallNumber(word);
  return word.size() <= 2 && day && *day >= 1 && *day <= 31;
}

bool isHalfOfDay(std::string_view word) {
  return word.size() == 2 && (word[1] | 0x20) == 'm' && ((word[0] | 0x20) == 'a' || (word[0] | 0x20) == 'p');
}

/// As "12:34".
void appendTime(std::string& text, const TimeOfDay& time) {
  const auto digit = [](int value) { return static_cast<char>('0' + value); };
  const char digits[] = {digit(time.hour / 10), digit(time.hour % 10), ':', digit(time.minute / 10),
                         digit(time.minute % 10)};
  text.append(digits, sizeof digits);
}

void appendNumber(std::string& text, int value) {
  char digits[12];
  const auto result = std::to_chars(digits, digits + sizeof digits, value);
  text.append(digits, result.ptr);
}

/// A complete date in the form that ParseListingDate reads as the same day: a text with a time of day means
/// the current year.
std::string composedDate(int year, int month, int day, const std::optional<TimeOfDay>& time, int yearNow) {
  std::string text(EnglishMonth(month), 3);
  text += ' ';
  appendNumber(text, day);
  text += ' ';
  if (time && year == yearNow) {
    appendTime(text, *time);
  } else {
    appendNumber(text, year);
  }
  return text;
}

DateParts partsOf(DateForm form, int year, int month, int day, const std::optional<TimeOfDay>& time) {
  return {form,
          static_cast<std::int8_t>(month),
          static_cast<std::int8_t>(day),
          static_cast<std::int8_t>(time ? time->hour : -1),
          static_cast<std::int8_t>(time ? time->minute : 0),
          static_cast<std::int16_t>(year),
          {}};
}

/// The English name of the month; with `anyWord` also an unknown name, as the server wrote it.
std::string monthText(std::string_view word, bool anyWord, int& month) {
  if (const auto known = MonthOfName(word)) {
    month = *known;
    return EnglishMonth(*known);
  }
  return std::string(anyWord && isAnyWord(word) ? word : std::string_view());
}

/// "Jan 15 12:34", "Jan 15 2009", "15 Jan 12:34", "15 Jan 2009"; "1月 15日", "15. Jan"; also with a time
/// after the year.
std::optional<ListedDate> readNamedDate(const Words& words, std::size_t at, bool anyMonth) {
  const std::string_view last = words[at + 2];
  const auto time = readTime(last, true);
  if (!time && !isYear(last)) return std::nullopt;
  ListedDate date;
  std::string_view day = words[at + 1];
  int month = 0;
  date.text = monthText(words[at], anyMonth, month);
  if (date.text.empty()) {
    date.text = monthText(words[at + 1], anyMonth, month);
    day = words[at];
  }
  for (const std::string_view ordinal : {".", "日", "일"}) {
    if (day.ends_with(ordinal)) day.remove_suffix(ordinal.size());
  }
  if (date.text.empty() || !isDay(day)) return std::nullopt;
  date.text += ' ';
  appendNumber(date.text, *smallNumber(day));
  date.text += ' ';
  date.lastWord = at + 2;
  date.parts.form = DateForm::yearOrTime;
  if (time) {
    appendTime(date.text, *time);
    return date;
  }
  date.text.append(last);
  if (const std::string_view next = words[at + 3]; !next.empty() && isDigit(next.front())) {
    if (const auto both = at + 4 < words.count ? readTime(next, false) : std::nullopt)
      date.parts = partsOf(DateForm::yearAndTime, *smallNumber(last), month, *smallNumber(day), both);
  }
  return date;
}

/// The optional time after a date. "09.30" or "9h30" could also be the beginning of a name: it is a time only
/// when a name follows, and, where dates without a time are customary and followed by two blanks, when only
/// one blank precedes it.
std::optional<TimeOfDay> readTimeAfter(const Words& words, std::size_t at, bool dateMayStandAlone) {
  const std::string_view word = words[at + 1];
  const auto time = readTime(word, true);
  if (!time || word[1] == ':' || word[2] == ':') return time;
  const bool close = word.data() == words[at].data() + words[at].size() + 1;
  return word[1] != '.' && (close || !dateMayStandAlone) && at + 2 < words.count ? time : std::nullopt;
}

/// "2009-01-15 12:34", with seconds and zone if listed; "01-15 12:34"; "2009-01-15", which is followed by an
/// extra blank.
std::optional<ListedDate> readIsoDate(const Words& words, std::size_t at, int yearNow) {
  std::string_view word = words[at];
  std::optional<int> year;
  if (word.size() == 10 && word[4] == '-' && isYear(word.substr(0, 4))) {
    year = smallNumber(word.substr(0, 4));
    word.remove_prefix(5);
  }
  if (word.size() != 5 || word[2] != '-') return std::nullopt;
  const auto month = smallNumber(word.substr(0, 2));
  const auto time = readTimeAfter(words, at, true);
  if (!month || *month < 1 || *month > 12 || !isDay(word.substr(3)) || (!time && !year)) return std::nullopt;
  ListedDate date;
  date.text = composedDate(year.value_or(yearNow), *month, *smallNumber(word.substr(3)), time, yearNow);
  date.lastWord = at;
  if (!time) {
    date.padded = true;
    return date;
  }
  const std::string_view zone = words[at + 2];
  const bool hasZone = zone.size() == 5 && (zone[0] == '+' || zone[0] == '-') && isNumber(zone.substr(1));
  date.lastWord = at + (hasZone ? 2 : 1);
  return date;
}

/// "14.11.2026", "3/4/2026", "01-15-09", "2026/11/14": three numbers separated by one sign.
struct NumericDay {
  int first = 0, second = 0, year = 0;
  char sign = '.';
  bool yearFirst = false, shortYear = false;
};

std::optional<NumericDay> readNumericDay(std::string_view word) {
  if (word.size() < 6 || word.size() > 10) return std::nullopt;
  NumericDay day;
  int number[3] = {};
  std::size_t digits[3] = {}, part = 0;
  for (const char c : word) {
    if (isDigit(c)) {
      if (digits[part] == 4) return std::nullopt;
      number[part] = number[part] * 10 + (c - '0');
      ++digits[part];
    } else if ((c == '.' || c == '/' || c == '-') && part < 2 && digits[part] > 0 &&
               (part == 0 || c == day.sign)) {
      day.sign = c;
      ++part;
    } else {
      return std::nullopt;
    }
  }
  if (part != 2) return std::nullopt;
  day.yearFirst = digits[0] == 4;
  const std::size_t first = day.yearFirst ? 1 : 0, year = day.yearFirst ? 0 : 2;
  day.shortYear = digits[year] == 2;
  if (digits[first] > 2 || digits[first + 1] > 2 || digits[first + 1] == 0) return std::nullopt;
  if (!day.shortYear && (digits[year] != 4 || number[year] < 1900 || number[year] > 2099))
    return std::nullopt;
  day.first = number[first];
  day.second = number[first + 1];
  day.year = day.shortYear ? number[year] + (number[year] < 70 ? 2000 : 1900) : number[year];
  return day;
}

/// `unsure` is the form to use when either number may be the month.
std::optional<ListedDate> datedAs(const NumericDay& numbers, const std::optional<TimeOfDay>& time,
                                  DateForm unsure, int yearNow) {
  const auto isMonth = [](int value) { return value >= 1 && value <= 12; };
  const auto isDayNumber = [](int value) { return value >= 1 && value <= 31; };
  const bool monthFirst = isMonth(numbers.first) && isDayNumber(numbers.second);
  const bool dayFirst = !numbers.yearFirst && isMonth(numbers.second) && isDayNumber(numbers.first);
  if (!monthFirst && !dayFirst) return std::nullopt;
  const bool same = numbers.yearFirst || numbers.first == numbers.second;
  DateForm form = DateForm::unambiguous;
  if (!same) form = monthFirst && dayFirst ? unsure : monthFirst ? DateForm::monthFirst : DateForm::dayFirst;
  ListedDate date;
  date.parts = partsOf(form, numbers.year, numbers.first, numbers.second, time);
  if (form != DateForm::dayMonthEither) {
    const bool swapped = form == DateForm::dayFirst || form == DateForm::dayMonth;
    date.text = composedDate(numbers.year, swapped ? numbers.second : numbers.first,
                             swapped ? numbers.first : numbers.second, time, yearNow);
  }
  return date;
}

/// "14.11.2026 09:15", "14.11.26 09.15", "14/11/2026 9h15", "2026/11/14 09:15", "14.11.2026".
std::optional<ListedDate> readNumericDate(const Words& words, std::size_t at, int yearNow) {
  const auto day = readNumericDay(words[at]);
  if (!day) return std::nullopt;
  const auto time = readTimeAfter(words, at, false);
  if (!time && day->shortYear) return std::nullopt;
  std::optional<ListedDate> date;
  if (day->shortYear && day->sign != '.') {
    date.emplace();  // any of the three numbers could be the year
  } else {
    date = datedAs(*day, time, day->sign == '.' ? DateForm::dayMonth : DateForm::dayMonthEither, yearNow);
    if (!date) return std::nullopt;
  }
  date->lastWord = at + (time ? 1 : 0);
  date->parts.listed = words.span(at, date->lastWord);
  if (date->text.empty()) date->text = date->parts.listed;
  return date;
}

}  // namespace

std::optional<TimeOfDay> readTime(std::string_view word, bool anySign) {
  std::size_t at = 0;
  while (at < word.size() && at < 3 && isDigit(word[at])) ++at;
  if (at == 0 || at > 2 || word.size() < at + 3) return std::nullopt;
  const char sign = word[at];
  if (sign != ':' && !(anySign && (sign == '.' || sign == 'h' || sign == 'H'))) return std::nullopt;
  auto hour = smallNumber(word.substr(0, at));
  const auto minute = smallNumber(word.substr(at + 1, 2));
  if (!hour || !minute || *minute > 59) return std::nullopt;
  const std::string_view rest = word.substr(at + 3);
  if (isHalfOfDay(rest)) {
    if (*hour < 1 || *hour > 12) return std::nullopt;
    *hour = *hour % 12 + ((rest[0] | 0x20) == 'p' ? 12 : 0);
  } else if (sign == ':' ? !rest.empty() && rest[0] != ':'
                         : !rest.empty() && !(sign == '.' && rest[0] == '.' && rest.size() == 3 &&
                                              isNumber(rest.substr(1)))) {
    return std::nullopt;
  }
  if (*hour > 23) return std::nullopt;
  return TimeOfDay{*hour, *minute};
}

std::optional<ListedDate> readUnixDate(const Words& words, std::size_t at, int yearNow, bool anyMonth) {
  auto date = readNamedDate(words, at, anyMonth);
  if (!date) date = readIsoDate(words, at, yearNow);
  if (!date) date = readNumericDate(words, at, yearNow);
  return date;
}

std::optional<ListedDate> readDosDate(const Words& words, int yearNow) {
  const auto day = readNumericDay(words[0]);
  if (!day) return std::nullopt;
  auto time = readTime(words[1], true);
  std::size_t lastWord = 1;
  if (time && isHalfOfDay(words[2])) {
    time = readTime(std::string(words[1]) + std::string(words[2]), true);
    lastWord = 2;
  }
  if (!time) return std::nullopt;
  const DateForm unsure = day->sign == '.'   ? DateForm::dayMonth
                          : day->sign == '-' ? DateForm::monthDay
                                             : DateForm::dayMonthEither;
  auto date = datedAs(*day, time, unsure, yearNow);
  if (!date) return std::nullopt;
  date->lastWord = lastWord;
  date->parts.listed = words.span(0, lastWord);
  if (date->text.empty()) date->text = date->parts.listed;
  return date;
}

std::optional<std::string> ListedDateForms::resolvedText(const DateParts& date, int yearNow) const {
  std::optional<TimeOfDay> time;
  if (date.hour >= 0) time = TimeOfDay{date.hour, date.minute};
  if (date.form == DateForm::yearAndTime) {
    if (!timeFollowsYear() || date.month == 0) return std::nullopt;
    return composedDate(date.year, date.month, date.day, time, yearNow);
  }
  if (!dayFirst_ && !monthFirst_) return std::nullopt;
  if (dayFirst_ && monthFirst_) return std::string(date.listed);
  if (date.form == (dayFirst_ ? DateForm::dayMonth : DateForm::monthDay)) return std::nullopt;
  return composedDate(date.year, monthFirst_ ? date.month : date.day, monthFirst_ ? date.day : date.month,
                      time, yearNow);
}

}  // namespace quillmoor::listing
