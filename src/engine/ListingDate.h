// Dates in listings.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/system/LocalTime.h"

namespace quillmoor {

/// The time that a RemoteEntry's dateText denotes: "Jan 15 12:34" is in the year of `now` even if that is in
/// the future, "Jan 15 2009" is noon of that day. Returns `now` for a text that cannot be read.
LocalDateTime ParseListingDate(std::string_view text, LocalDateTime now);

/// 1 to 12 for a month's name as listings abbreviate it in English and some twenty other languages, ignoring
/// the case of ASCII letters.
std::optional<int> MonthOfName(std::string_view name);

/// "Jan" to "Dec" for 1 to 12.
const char* EnglishMonth(int month);

}  // namespace quillmoor
