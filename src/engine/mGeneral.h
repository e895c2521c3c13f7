// Formats sizes, rates and times for the log and the labels.
#pragma once

#include <cstdint>
#include <string>

#include "platform/system/LocalTime.h"

namespace quillmoor {

/// In the largest unit that yields at least 1, with three decimals and thousands separators: "1,023.000
/// Bytes", "1.500 KB". "" below 1.
std::string FormatSize(double bytes);

/// Rounded, 100 at most; a file that grows during its transfer exceeds its size. `size` must be above 0.
int Percentage(std::int64_t count, std::int64_t size);

/// Average rate since the transfer began; "" when nothing was received or no time has passed. Deliberate:
/// changes from bytes to KB above 1000, although a KB is 1024 bytes.
std::string FormatRate(std::int64_t bytes, std::int64_t elapsedMs);

/// "14:03:09".
std::string TimeText(LocalDateTime time);
/// "05-07-2011 14:03:09", the month first.
std::string FinishedText(LocalDateTime time);
/// "05-07-2011 14:03", the month first.
std::string ReportTimeText(LocalDateTime time);
/// "-05-07-2011", the month first: appended to a profile's name for the folder of one run.
std::string DatedFolderSuffix(LocalDateTime time);
/// "2011-05-07 14:03:09", for comparing two dates.
std::string GeneralDateText(LocalDateTime time);

}  // namespace quillmoor
