// Dates in listings.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/system/LocalTime.h"

namespace quillmoor {

/// The date-time that a RemoteEntry's dateText means: "Jan 15 12:34" is in the year of `now` even if that
/// lies in the future, "Jan 15 2009" is noon of that day. Whatever cannot be read means `now`.
LocalDateTime ParseListingDate(std::string_view text, LocalDateTime now);

/// 1 to 12 for a month's name as listings abbreviate it in English and a score of other languages, whatever
/// the case of its ASCII letters.
std::optional<int> MonthOfName(std::string_view name);

/// "Jan" to "Dec" for 1 to 12.
const char* EnglishMonth(int month);

}  // namespace quillmoor
