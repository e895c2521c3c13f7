// From the text of a LIST reply to entries. LIST has no standard (RFC 959 §4.1.3): these are the forms that
// servers write, UNIX "ls -l" and its relatives and the MS-DOS style.
#pragma once

#include <string>

#include "base/Pump.h"
#include "engine/RemoteListing.h"
#include "platform/system/LocalTime.h"

namespace quillmoor {

/// Interprets every line that it can. Customary noise (blank lines, "total 12", headings, the frame that
/// `dir` writes) is passed over; any other line is kept in `unread` when lines beside it were understood,
/// else the format is `neither` and there are no entries. Of a recursive listing only the current folder's
/// lines count.
///
/// `now` decides which dates are given with a time of day: those of its year. A date of numbers that could
/// begin with the day as well as with the month is read as the other lines of the listing show; where they
/// do not, its entry keeps the date as it is listed, which ParseListingDate cannot read. Dots mean day first
/// and the dashes of MS-DOS lines month first unless other lines show the opposite.
///
/// A last line without a line end is read like any other, for some servers write it so: FtpClient raises an
/// error for a transfer that the server did not end in order, so no half line of one arrives here.
///
/// `pump` is called now and then while a long text is read.
RemoteListing ParseListing(std::string text, LocalDateTime now, const Pump& pump = {});

}  // namespace quillmoor
