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
  ListedDate date;  // its `text` has been moved into the entry
  /// For DateForm::yearAndTime: how many bytes at the start of the name are the time, if it is part of the
  /// date.
  std::size_t timeInName = 0;
};

/// "-rw-r--r-- 1 owner group 1024 Jan 15 12:34 name" and similar lines, optionally after columns of numbers
/// (inode, blocks). `line` must not begin with a blank. Nothing when the line is not in this style.
std::optional<ListedLine> parseUnixLine(std::string_view line, int yearNow);

/// "01-15-09  10:30AM  1024 name", "01-15-09  10:30AM  <DIR>  name".
std::optional<ListedLine> parseDosLine(std::string_view line, int yearNow);

/// Whether the line begins with a mode or a date: it is then about a file even if the rest cannot be read.
bool beginsLikeEntry(std::string_view line);

}  // namespace quillmoor::listing
