#include "platform/ftp/FtpWording.h"

#include <algorithm>
#include <initializer_list>
#include <vector>

#include "base/Ascii.h"

namespace quillmoor {
namespace {

bool isOneOf(std::string_view word, std::initializer_list<std::string_view> words) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

bool isNumber(std::string_view word) {
  return !word.empty() && word.find_first_not_of("0123456789,.'") == std::string_view::npos;
}

/// The lines of a reply without their codes.
std::vector<std::string_view> linesOf(std::string_view text) {
  std::string_view code = text.substr(0, 3);
  if (!isNumber(code)) code = {};  // the text is not a reply
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const auto end = std::min(text.find("\r\n"), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 2, text.size()));
    if (!code.empty() && line.starts_with(code)) line.remove_prefix(std::min<std::size_t>(4, line.size()));
    lines.push_back(line);
  }
  return lines;
}

/// The words in lower case, without quoted text and punctuation around them.
std::vector<std::string> wordsOf(std::string_view line) {
  // A leading dot may be part of a name (".htaccess"), a trailing one is not.
  constexpr std::string_view kBefore = "([{<:,\t", kAfter = ")]}>.,;:!\t\r";
  std::string plain;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    const bool opensQuote = (c == '"' || c == '\'') && (i == 0 || line[i - 1] == ' ' || line[i - 1] == '(');
    const auto close = opensQuote ? line.find(c, i + 1) : std::string_view::npos;
    if (close != std::string_view::npos) {
      i = close;
    } else {
      plain += AsciiLower(c);
    }
  }
  std::vector<std::string> words;
  for (std::size_t at = 0; at < plain.size();) {
    const auto end = std::min(plain.find(' ', at), plain.size());
    std::string_view word = std::string_view(plain).substr(at, end - at);
    at = end + 1;
    word.remove_prefix(std::min(word.find_first_not_of(kBefore), word.size()));
    while (word.size() > 1 && kAfter.find(word.back()) != std::string_view::npos) word.remove_suffix(1);
    if (!word.empty()) words.emplace_back(word);
  }
  return words;
}

/// A path, a pattern, or a switch that was taken for one.
bool isName(std::string_view word) {
  return word.find_first_of("/\\*?") != std::string_view::npos || word.front() == '-' || word.front() == '.';
}

bool isListed(std::string_view word) {
  return isOneOf(word, {"entry",  "entries", "file",    "files",   "item",      "items",       "line",
                        "lines",  "match",   "matches", "name",    "names",     "object",      "objects",
                        "record", "records", "result",  "results", "directory", "directories", "folders",
                        "file(s", "list",    "listing", "output"});
}

using Words = std::vector<std::string>;

bool isAt(const Words& words, std::size_t at, std::initializer_list<std::string_view> wanted) {
  return at < words.size() && isOneOf(words[at], wanted);
}

/// Whether one of the three words before this one satisfies `test`.
template <class Test>
bool anyBefore(const Words& words, std::size_t at, Test test) {
  const auto here = words.begin() + static_cast<std::ptrdiff_t>(at);
  return std::any_of(here - static_cast<std::ptrdiff_t>(std::min<std::size_t>(at, 3)), here, test);
}

bool isDenial(std::string_view word) {
  return isOneOf(word, {"not", "no", "never", "none", "without", "0", "isn't", "wasn't"});
}

/// "truncated", and the same in French, Italian, Spanish and Portuguese; not where it is negated.
bool saysTruncated(const Words& words, std::size_t at) {
  const std::string_view word = words[at];
  const bool stem = word.starts_with("truncat") || word.starts_with("tronqu") ||
                    word.starts_with("troncat") || word.starts_with("truncad");
  return stem && !isAt(words, at + 1, {"no", "0", "none", "false"}) && !anyBefore(words, at, isDenial);
}

/// "limited to 100 matches", "listing limited to 100"; but rates and quotas are limited, too.
bool saysLimited(const Words& words, std::size_t at) {
  if (!isAt(words, at, {"limited", "restricted"}) || !isAt(words, at + 1, {"to"})) return false;
  std::size_t number = at + 2;
  while (isAt(words, number, {"the", "first"})) ++number;
  if (number >= words.size() || !isNumber(words[number])) return false;
  return (number + 1 < words.size() && isListed(words[number + 1])) || anyBefore(words, at, isListed);
}

/// "only the first 100 entries", "only 100 of 200 entries", "too many files", "limit of 100 entries reached".
bool saysNotAll(const Words& words, std::size_t at) {
  if (!std::any_of(words.begin(), words.end(), isListed)) return false;
  if (isAt(words, at, {"only"})) {
    return isAt(words, at + 1, {"first"}) ||
           (isAt(words, at + 1, {"the"}) && isAt(words, at + 2, {"first"})) ||
           (isAt(words, at + 2, {"of"}) && isNumber(words[at + 1]) && at + 3 < words.size() &&
            isNumber(words[at + 3]));
  }
  if (isAt(words, at, {"too"}) && isAt(words, at + 1, {"many"}))
    return at + 2 < words.size() && isListed(words[at + 2]);
  if (!isAt(words, at, {"limit", "maximum"}) || anyBefore(words, at, isDenial)) return false;
  if (std::any_of(words.begin(), words.end(), [](const auto& word) { return isOneOf(word, {"quota"}); }))
    return false;  // a limit on storing or fetching
  for (std::size_t i = at; i < words.size(); ++i) {
    if (isAt(words, i, {"reached", "exceeded"})) return !anyBefore(words, i, isDenial);
  }
  return false;
}

bool saysCut(const Words& words) {
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (isName(words[i])) continue;
    if (saysTruncated(words, i) || saysLimited(words, i) || saysNotAll(words, i)) return true;
  }
  return false;
}

}  // namespace

std::string listingCut(std::string_view replyText) {
  for (const std::string_view line : linesOf(replyText)) {
    if (saysCut(wordsOf(line))) return std::string(line);
  }
  return {};
}

bool saysFolderIsEmpty(const FtpReply& reply) {
  return (reply.code == 450 || reply.code == 550) && saysNoFiles(reply.text);
}

bool saysNoFiles(std::string_view text) {
  constexpr std::size_t kLongest = 1000;  // bytes; the text may be a listing
  if (text.size() > kLongest) return false;
  std::vector<std::string> words;
  for (std::string_view line : linesOf(text)) {
    // "/my docs: No files found": the name may contain spaces.
    const auto colon = line.find(": ");
    if (colon != std::string_view::npos && colon > 0 && isName(line.substr(0, 1))) line.remove_prefix(colon);
    for (std::string& word : wordsOf(line)) {
      if (!isName(word)) words.push_back(std::move(word));
    }
  }
  bool nothing = false, empty = false, folder = false;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string_view word = words[i];
    const bool none = isOneOf(word, {"no", "0"});
    if (none) {
      if (i + 1 < words.size() && isOneOf(words[i + 1], {"matching", "data"})) ++i;
      if (++i == words.size() || !isOneOf(words[i], {"file", "files", "file(s", "entries", "matches",
                                                     "directories", "members", "datasets", "sets"}))
        return false;
      nothing = true;
    } else if (isOneOf(word, {"or", "and"})) {
      if (++i == words.size() || !isOneOf(words[i], {"directories", "folders", "subdirectories"}))
        return false;
    } else if (isOneOf(word, {"empty"})) {
      empty = true;
    } else if (isOneOf(word, {"directory", "folder", "dir"})) {
      folder = true;
    } else if (!isOneOf(word,
                        {"found", "match", "matched", "matching", "to", "list", "in", "for", "this", "that",
                         "the", "current", "there", "are", "is", "were", "total", "contains"})) {
      return false;
    }
  }
  return nothing || (empty && folder);
}

}  // namespace quillmoor
