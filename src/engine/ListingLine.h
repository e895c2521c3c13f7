// One line of a listing, in the UNIX style or the MS-DOS style.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "engine/ListingDateColumn.h"
#include "engine/RemoteListing.h"

namespace quillmoor::listing {

struct ListedLine {
  RemoteEntry entry;
  ListedDate date;  // `text` has moved into the entry
  /// Of a date of the form yearAndTime: so much of the name is the time, if that is part of the date.
  std::size_t timeInName = 0;
};

/// "-rw-r--r-- 1 owner group 1024 Jan 15 12:34 name" and its relatives, with or without columns of numbers
/// in front (inode, blocks). `line` begins with no blank. Nothing when it is no such line.
std::optional<ListedLine> parseUnixLine(std::string_view line, int yearNow);

/// "01-15-09  10:30AM  1024 name", "01-15-09  10:30AM  <DIR>  name".
std::optional<ListedLine> parseDosLine(std::string_view line, int yearNow);

/// Whether the line begins with a mode or with a date, so that it is about a file even if the rest of it
/// cannot be read.
bool beginsLikeEntry(std::string_view line);

}  // namespace quillmoor::listing
