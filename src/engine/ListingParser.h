// Parses the text of a LIST reply into entries. Its format has no standard (RFC 959 §4.1.3); servers write
// UNIX "ls -l", variants of it, or the MS-DOS style.
#pragma once

#include <string>

#include "base/Pump.h"
#include "engine/RemoteListing.h"
#include "platform/system/LocalTime.h"

namespace quillmoor {

/// Reads every line that it can. The usual noise (blank lines, "total 12", headings, what `dir` writes around
/// its lines) is skipped. Other unreadable lines are kept in `unread` when at least one entry was read;
/// otherwise the format is `neither`. Of a recursive listing only the current folder's lines are read.
///
/// Only dates in the year of `now` keep their time of day. Whether a numeric date begins with the day or the
/// month is decided by the other lines of the listing; when they do not show it, the entry keeps the date as
/// listed, which ParseListingDate cannot read. Dots mean day first, and dashes in MS-DOS lines month first,
/// unless other lines show the opposite.
///
/// A last line without a line end is read like any other, since some servers write it so. It is never a
/// truncated one: FtpClient raises an error for an incomplete transfer.
///
/// `pump` is called regularly while a long text is read.
RemoteListing ParseListing(std::string text, LocalDateTime now, const Pump& pump = {});

}  // namespace quillmoor
