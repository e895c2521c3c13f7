// One listing of a remote folder, line by line, as the walk and the browser use it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quillmoor {

/// The style in which the lines of a listing were read.
enum class ListingFormat { unixStyle = 0, dosStyle = 1, neither = 2 };

/// One interpreted line. Names, owners and link targets are the server's bytes.
struct RemoteEntry {
  std::string name;              // without path; may be "." or ".."; blanks at either end belong to it
  std::string type;              // one letter: "d" folder, "l" link, anything else (usually "-") a file
  std::int32_t permissions = 0;  // mode bits, 07777 at most
  std::string user;
  std::string group;
  std::int32_t size = 0;  // bytes; capped at the largest 32-bit value
  /// Whether sizeBytes is the exact size: false when the listing rounds it ("1.5K") or has none (devices).
  bool sizeExact = true;
  std::int64_t sizeBytes = 0;
  /// "Jan 5 12:34" or "Jan 5 2009", for ParseListingDate; a month in an unknown language is kept as listed.
  std::string dateText;
  std::string linkTarget;
};

struct RemoteListing {
  std::string text;  // as received; "" when the listing was empty
  ListingFormat format = ListingFormat::unixStyle;
  std::vector<RemoteEntry> entries;  // in the order of the lines
  /// Lines that are neither entries nor the usual noise, complete and in order: each may be a file that is
  /// missed. At most kMostUnread are kept. Empty when the format is `neither`.
  std::vector<std::string> unread;
  std::size_t unreadCount = 0;  // all such lines, kept or not

  static constexpr std::size_t kMostUnread = 1000;
};

}  // namespace quillmoor
