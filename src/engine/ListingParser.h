// From the text of a LIST reply to entries. LIST has no standard (RFC 959 §4.1.3): these are the forms that
// servers write, UNIX "ls -l" and its relatives and the MS-DOS style.
#pragma once

#include <string>

#include "engine/RemoteListing.h"
#include "platform/LocalTime.h"
#include "platform/Pump.h"

namespace quillmoor {

/// Interprets every line that it can. Lines that it cannot (blank ones, "total 12", headings, banners) are
/// passed over when others were understood or they are customary noise; else the format is `neither` and
/// there are no entries. Of a recursive listing only the current folder's lines count. `now` decides which
/// dates are given with a time of day: those of its year. `pump` is called now and then
/// while a long text is read.
RemoteListing ParseListing(std::string text, LocalDateTime now, const Pump& pump = {});

}  // namespace quillmoor
