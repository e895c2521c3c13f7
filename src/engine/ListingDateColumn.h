// The date column of a listing line, in each of the forms that servers write.
//
// Two questions cannot be answered by one line: whether "03/04/2026" begins with the day or the month, and
// whether the time in "Nov 14 2026 09:00 both" is part of the date or of the name. One server writes all
// lines of a listing in one form, so the other lines answer them: see ListedDateForms.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "engine/ListingColumns.h"

namespace quillmoor::listing {

struct TimeOfDay {
  int hour = 0, minute = 0;
};

/// "9:30", "22:30", "22:30:15", "10:30AM", "12:05pm"; with `anySign` also "09.30", "09.30.15" and "9h30".
std::optional<TimeOfDay> readTime(std::string_view word, bool anySign);

enum class DateForm : std::uint8_t {
  settled,        // in no need of other lines, nor of help to them
  yearOrTime,     // "Jan 15 12:34", "Jan 15 2009"
  yearAndTime,    // "Jan 15 2009 12:34": the time may belong to the name
  dayFirst,       // "14/11/2026"
  monthFirst,     // "11/14/2026"
  dayMonth,       // "03.04.2026", day first unless other lines say otherwise
  monthDay,       // "03-04-26" of an MS-DOS line, month first unless other lines say otherwise
  dayMonthEither  // "03/04/2026", not known unless other lines say
};

/// What is kept of a date until the other lines have settled it.
struct DateParts {
  DateForm form = DateForm::settled;
  std::int8_t month = 0, day = 0;     // of the last three forms the first number and the second
  std::int8_t hour = -1, minute = 0;  // -1: no time
  std::int16_t year = 0;
  std::string_view listed;
};

struct ListedDate {
  /// What it means, for ParseListingDate, as far as the line alone tells.
  std::string text;
  std::size_t lastWord = 0;
  bool padded = false;  // a blank more than usual stands before the name
  DateParts parts;
};

/// The date that begins with word `at`, of a UNIX line. With `anyMonth` a word that no language here knows
/// counts as the name of a month: a file must not go missing for its month's sake, and a date that nobody
/// can read is one that ParseListingDate knows how to take.
std::optional<ListedDate> readUnixDate(const Words& words, std::size_t at, int yearNow, bool anyMonth);

/// The date and time with which an MS-DOS line begins. Dashes without other signs mean month, day, year.
std::optional<ListedDate> readDosDate(const Words& words, int yearNow);

/// What all lines of a listing together say about their dates.
class ListedDateForms {
 public:
  void add(DateForm form) {
    yearOrTime_ |= form == DateForm::yearOrTime;
    dayFirst_ |= form == DateForm::dayFirst;
    monthFirst_ |= form == DateForm::monthFirst;
  }
  static bool needsOthers(DateForm form) {
    return form == DateForm::yearAndTime || form >= DateForm::dayMonth;
  }
  /// Whether the time after a year is part of the date: unless some line has only one of them.
  bool timeFollowsYear() const { return !yearOrTime_; }
  /// After all lines were added: the text of a date of one of the forms that `needsOthers` if it is another
  /// than the line alone has told. A date that the lines contradict is given as it is listed, which
  /// ParseListingDate cannot read.
  std::optional<std::string> settledText(const DateParts& date, int yearNow) const;

 private:
  bool yearOrTime_ = false, dayFirst_ = false, monthFirst_ = false;
};

}  // namespace quillmoor::listing
