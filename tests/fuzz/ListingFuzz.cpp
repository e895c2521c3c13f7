// A listing: no line becomes more than one entry or unread line, and nothing comes from elsewhere.
#include <algorithm>

#include "Fuzz.h"
#include "engine/ListingDate.h"
#include "engine/ListingParser.h"

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
  const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1;
  require(listing.entries.size() + listing.unreadCount <= lines);
}
