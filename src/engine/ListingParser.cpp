#include "engine/ListingParser.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "engine/ListingLine.h"

namespace quillmoor {
namespace {

using namespace listing;

bool isBlank(std::string_view line) {
  return line.find_first_not_of(" \t") == std::string_view::npos;
}

/// "total 12" in any language.
bool isTotal(std::string_view line) {
  const Words words(line);
  return words.count == 2 && isAnyWord(words[0]) && isSize(words[1]);
}

bool isHeading(std::string_view line) {
  return line.ends_with(':') && !beginsLikeEntry(line);
}

constexpr std::string_view kDirectoryOf = "Directory of ";

/// The lines that `dir` of MS-DOS writes around its entries.
bool isDirFrame(std::string_view line) {
  for (const std::string_view start :
       {std::string_view("Volume in drive "), std::string_view("Volume Serial Number is "), kDirectoryOf}) {
    if (line.starts_with(start)) return true;
  }
  const Words words(line);
  return words.count >= 4 && isSize(words[0]) && (words[1] == "File(s)" || words[1] == "Dir(s)") &&
         isSize(words[2]) && words[3] == "bytes";
}

/// The path of a heading "path:" or "Directory of path"; empty for any other line.
std::string_view headingPath(std::string_view line) {
  if (line.starts_with(kDirectoryOf)) return line.substr(kDirectoryOf.size());
  return isHeading(line) ? line.substr(0, line.size() - 1) : std::string_view();
}

/// Reads a listing line by line.
class Reader {
 public:
  Reader(RemoteListing& listing, int yearNow) : listing_(listing), yearNow_(yearNow) {}

  /// `following` is the text after the line. Returns false when the current folder's lines have ended.
  bool take(std::string_view line, std::string_view following);
  void finish();

 private:
  void addEntry(ListedLine&& listed, ListingFormat format);
  bool isCustomaryNoise(std::string_view line);
  void passOver(std::string_view line);
  bool isListedFolder(std::string_view path);

  /// An entry whose date, or whose name after the date, depends on other lines.
  struct Unresolved {
    std::size_t entry;
    std::size_t timeInName;
    DateParts date;
  };

  RemoteListing& listing_;
  int yearNow_;
  ListedDateForms dateForms_;
  std::vector<Unresolved> unresolved_;
  std::unordered_set<std::string> folders_;  // folders among the first `foldersOf_` entries
  std::size_t foldersOf_ = 0;
  bool first_ = true, afterBlank_ = false, elsewhere_ = false, unreadable_ = false, totalSeen_ = false,
       afterHeading_ = false;
};

void Reader::addEntry(ListedLine&& listed, ListingFormat format) {
  if (listing_.entries.empty()) listing_.format = format;
  dateForms_.add(listed.date.parts.form);
  if (ListedDateForms::needsOthers(listed.date.parts.form))
    unresolved_.push_back({listing_.entries.size(), listed.timeInName, listed.date.parts});
  listing_.entries.push_back(std::move(listed.entry));
}

/// The lines that `ls` writes around its entries: blank lines, headings before the entries or after a blank
/// line, and one total before the entries or after a heading. A listing with nothing else is an empty
/// folder's.
bool Reader::isCustomaryNoise(std::string_view line) {
  if (isBlank(line)) return true;
  const bool before = listing_.entries.empty();
  if (isHeading(line)) return before || afterBlank_;
  return isTotal(line) && (afterHeading_ || (before && !std::exchange(totalSeen_, true)));
}

void Reader::passOver(std::string_view line) {
  if (isCustomaryNoise(line)) return;
  unreadable_ = true;
  // A path in the first line names the listed folder.
  if ((first_ && line.starts_with('/')) || isDirFrame(line)) return;
  if (++listing_.unreadCount <= RemoteListing::kMostUnread) listing_.unread.emplace_back(line);
}

bool Reader::isListedFolder(std::string_view path) {
  for (; foldersOf_ < listing_.entries.size(); ++foldersOf_) {
    const RemoteEntry& entry = listing_.entries[foldersOf_];
    if (entry.type == "d") folders_.insert(entry.name);
  }
  return folders_.contains(std::string(path.substr(path.find_last_of("/\\") + 1)));
}

bool Reader::take(std::string_view line, std::string_view following) {
  while (line.ends_with('\r')) line.remove_suffix(1);
  line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
  if (elsewhere_) {
    passOver(line);
    return true;
  }
  if (auto asDos = parseDosLine(line, yearNow_)) {
    addEntry(*std::move(asDos), ListingFormat::dosStyle);
  } else if (auto asUnix = parseUnixLine(line, yearNow_)) {
    addEntry(*std::move(asUnix), ListingFormat::unixStyle);
  } else {
    if (afterBlank_ && !listing_.entries.empty()) {
      // A recursive listing continues with another folder; a remark that ends in a colon looks the same.
      if (const std::string_view path = headingPath(line); !path.empty()) {
        if (isListedFolder(path)) return false;
        const std::string_view next = following.substr(0, following.find_first_of("\r\n"));
        // The next lines belong to an unknown folder: leave them unread rather than fetch from the wrong one.
        elsewhere_ = path.starts_with('/') || path.starts_with("./") || isTotal(next);
      }
    }
    passOver(line);
  }
  afterBlank_ = isBlank(line);
  afterHeading_ = isHeading(line);
  first_ = first_ && afterBlank_;
  return true;
}

void Reader::finish() {
  for (const Unresolved& unresolved : unresolved_) {
    RemoteEntry& entry = listing_.entries[unresolved.entry];
    if (unresolved.date.form == DateForm::yearAndTime) {
      if (!dateForms_.timeFollowsYear() || entry.name.size() <= unresolved.timeInName) continue;
      entry.name.erase(0, unresolved.timeInName);
    }
    if (auto text = dateForms_.resolvedText(unresolved.date, yearNow_)) entry.dateText = *std::move(text);
  }
  if (!listing_.entries.empty()) return;
  if (unreadable_) listing_.format = ListingFormat::neither;
  listing_.unread.clear();
  listing_.unreadCount = 0;
}

}  // namespace

RemoteListing ParseListing(std::string text, LocalDateTime now, const Pump& pump) {
  RemoteListing listing;
  listing.text = std::move(text);
  Reader reader(listing, SplitLocalDateTime(now).year);
  std::string_view rest = listing.text;
  for (std::size_t lines = 1; !rest.empty(); ++lines) {
    constexpr std::size_t kLinesBetweenPumps = 4096;  // about two milliseconds
    if (pump && lines % kLinesBetweenPumps == 0) pump();
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    const std::string_view line = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    if (!reader.take(line, rest)) break;
  }
  reader.finish();
  return listing;
}

}  // namespace quillmoor
