// Texts for sizes, rates and times, as the log and the labels show them.
#pragma once

#include <cstdint>
#include <string>

#include "platform/system/LocalTime.h"

namespace quillmoor {

/// In the largest unit of which there is at least one, with three decimals and thousands marked: "1,023.000
/// Bytes", "1.500 KB". "" below 1.
std::string FormatSize(double bytes);

/// Average rate since the transfer began. "" when nothing came or no time has passed. Changes from bytes to
/// KB above 1000 although a KB is 1024: so it is wanted.
std::string FormatRate(std::int64_t bytes, std::int64_t elapsedMs);

/// "14:03:09".
std::string TimeText(LocalDateTime time);
/// "05-07-2011 14:03:09", the month first.
std::string FinishedText(LocalDateTime time);
/// "05-07-2011 14:03", the month first.
std::string ReportTimeText(LocalDateTime time);
/// "-05-07-2011", the month first: behind a profile's name the folder of one run.
std::string DatedFolderSuffix(LocalDateTime time);
/// "2011-05-07 14:03:09", for two dates side by side.
std::string GeneralDateText(LocalDateTime time);

}  // namespace quillmoor
