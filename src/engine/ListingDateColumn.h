// The date column of a listing line, in every form that servers write.
//
// One line alone cannot tell whether "03/04/2026" begins with the day or the month, nor whether the time in
// "Nov 14 2026 09:00 both" is part of the date or of the name. A server writes all lines of a listing in one
// form, so the other lines decide: see ListedDateForms.
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
  unambiguous,    // needs no other lines and tells nothing about them
  yearOrTime,     // "Jan 15 12:34", "Jan 15 2009"
  yearAndTime,    // "Jan 15 2009 12:34": the time may belong to the name
  dayFirst,       // "14/11/2026"
  monthFirst,     // "11/14/2026"
  dayMonth,       // "03.04.2026", day first unless other lines show the opposite
  monthDay,       // "03-04-26" of an MS-DOS line, month first unless other lines show the opposite
  dayMonthEither  // "03/04/2026", unknown unless other lines show which
};

/// The parts of a date, kept until the other lines resolve its form.
struct DateParts {
  DateForm form = DateForm::unambiguous;
  std::int8_t month = 0, day = 0;     // in the last three forms: first and second number
  std::int8_t hour = -1, minute = 0;  // -1: no time
  std::int16_t year = 0;
  std::string_view listed;
};

struct ListedDate {
  /// The date as this line alone determines it, in the form that ParseListingDate reads.
  std::string text;
  std::size_t lastWord = 0;
  bool padded = false;  // one extra blank precedes the name
  DateParts parts;
};

/// The date of a UNIX line that begins with word `at`. With `anyMonth` an unknown word counts as the name of
/// a month: a file must not be missed because of its month, and ParseListingDate accepts an unreadable date.
std::optional<ListedDate> readUnixDate(const Words& words, std::size_t at, int yearNow, bool anyMonth);

/// The date and time at the beginning of an MS-DOS line. Numbers separated by dashes are month, day, year.
std::optional<ListedDate> readDosDate(const Words& words, int yearNow);

/// What all lines of a listing together show about the form of their dates.
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
  /// Whether a time after the year is part of the date: not when some line has only one of them.
  bool timeFollowsYear() const { return !yearOrTime_; }
  /// To be called after all lines were added, for a date whose form `needsOthers`: its text, or nothing when
  /// the text read from its own line stays. When the lines contradict each other, returns the date as listed,
  /// which ParseListingDate cannot read.
  std::optional<std::string> resolvedText(const DateParts& date, int yearNow) const;

 private:
  bool yearOrTime_ = false, dayFirst_ = false, monthFirst_ = false;
};

}  // namespace quillmoor::listing
