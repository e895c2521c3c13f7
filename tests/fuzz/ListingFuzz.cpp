// Any input is a listing: each line becomes an entry, is kept as unread, or is noise, and none is lost.
#include <algorithm>

#include "Fuzz.h"
#include "engine/ListingDate.h"
#include "engine/ListingParser.h"

namespace quillmoor {
namespace {

struct Counts {
  std::size_t lines = 0, entries = 0, unread = 0;
  bool mayBeRecursive = false;  // lines of another folder may follow
};

/// Counts what each line is when parsed on its own after a readable line.
Counts countLines(std::string_view text, LocalDateTime now) {
  Counts counts;
  for (std::size_t end = 0; !text.empty(); text.remove_prefix(std::min(end + 1, text.size()))) {
    end = std::min(text.find('\n'), text.size());
    const std::string line(text.substr(0, end));
    const RemoteListing two = ParseListing("-rw-r--r-- 1 a b 1 Jan 15 12:34 a\n" + line, now);
    require(two.entries.size() - 1 + two.unreadCount <= 1);
    ++counts.lines;
    counts.entries += two.entries.size() - 1;
    const std::size_t start = line.find_first_not_of(" \t\r");
    const bool path = first && start != std::string::npos && line[start] == '/';
    counts.unread += path ? 0 : two.unreadCount;
    first = first && start == std::string::npos;
    counts.mayBeRecursive |= line.find(':') != std::string::npos && two.entries.size() == 1;
    counts.mayBeRecursive |= line.find("Directory of") != std::string::npos;
  }
  return counts;
}

}  // namespace
}  // namespace quillmoor

void quillmoor::tryInput(std::string_view input) {
  const LocalDateTime now = *MakeLocalDateTime({2026, 11, 14, 10, 30, 0, 0});
  const std::string text(input);
  ParseListingDate(text, now);
  const RemoteListing listing = ParseListing(text, now);
  require(listing.text == text);
  require((listing.format == ListingFormat::neither) <= listing.entries.empty());
  require(listing.unread.size() == std::min(listing.unreadCount, RemoteListing::kMostUnread));
  require(listing.unreadCount == 0 || !listing.entries.empty());
  for (const RemoteEntry& entry : listing.entries) {
    require(!entry.name.empty() && entry.name.find('\n') == std::string::npos && entry.type.size() == 1);
    require(entry.sizeBytes >= 0 && entry.size >= 0 && text.find(entry.name) != std::string::npos);
    ParseListingDate(entry.dateText, now);
  }
  for (const std::string& line : listing.unread)
    require(line.find('\n') == std::string::npos && line.find_first_not_of(" \t") != std::string::npos);
  const Counts counts = countLines(text, now);
  require(listing.entries.size() + listing.unreadCount <= counts.lines);
  if (counts.mayBeRecursive) return 0;
  require(listing.entries.size() == counts.entries);
  // Before the entries a heading or a total is noise; in countLines every line follows an entry.
  if (!listing.entries.empty()) require(listing.unreadCount <= counts.unread);
  return 0;
}
