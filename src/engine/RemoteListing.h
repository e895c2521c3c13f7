// One listing of a remote folder, line by line, as the walk and the browser read it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quillmoor {

/// How the lines of a listing were understood.
enum class ListingFormat { unixStyle = 0, dosStyle = 1, neither = 2 };

/// One interpreted line. Names, owners and link targets are the server's bytes.
struct RemoteEntry {
  std::string name;              // without any folder; may be "." or ".."; blanks at either end belong to it
  std::string type;              // one letter: "d" folder, "l" link, anything else ("-" as a rule) a file
  std::int32_t permissions = 0;  // mode bits, 07777 at most
  std::string user;
  std::string group;
  std::int32_t size = 0;  // bytes; a larger one shows as the largest that fits
  /// Whether sizeBytes is the exact size: not so where the listing rounds ("1.5K") or gives none (devices).
  bool sizeExact = true;
  std::int64_t sizeBytes = 0;
  /// "Jan 5 12:34" or "Jan 5 2009", for ParseListingDate; a month in a language unknown here stays as it is.
  std::string dateText;
  std::string linkTarget;
};

struct RemoteListing {
  std::string text;  // as received; "" when the folder listed nothing
  ListingFormat format = ListingFormat::unixStyle;
  std::vector<RemoteEntry> entries;  // in the order of the lines
  /// Lines beside the entries that are neither one nor customary noise, whole and in order: each may be a
  /// file that will be missed. No more than kMostUnread of them are kept. Empty when the format is `neither`.
  std::vector<std::string> unread;
  std::size_t unreadCount = 0;  // of all such lines, kept or not

  static constexpr std::size_t kMostUnread = 1000;
};

}  // namespace quillmoor
