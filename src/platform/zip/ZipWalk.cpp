#include "platform/zip/ZipWalk.h"

#include <algorithm>
#include <limits>
#include <system_error>
#include <utility>

#include "base/Ascii.h"
#include "platform/files/LocalPath.h"
#include "platform/files/ReservedNames.h"

namespace quillmoor::zip {
namespace {

bool isSeparator(char c) {
  return c == kLocalSeparator || c == '/';
}

char folded(char c) {
  return kLocalNameRules == LocalNameRules::windows ? AsciiLower(c) : c;
}

}  // namespace

std::optional<WildcardPath> splitWildcardPath(std::string_view pattern) {
  std::size_t names = pattern.size();
  while (names > 0 && !isSeparator(pattern[names - 1])) --names;
  WildcardPath path{std::string(pattern.substr(0, names)), std::string(pattern.substr(names))};
  if (path.names.empty() || pattern.find('\0') != std::string_view::npos) return std::nullopt;
  if (path.folder.empty()) path.folder = std::string(".") + kLocalSeparator;
  while (path.folder.size() > 1 && isSeparator(path.folder[path.folder.size() - 2])) path.folder.pop_back();
  path.folder.back() = kLocalSeparator;
  return path;
}

bool matchesWildcard(std::string_view pattern, std::string_view name) {
  std::size_t p = 0, n = 0;
  // Where to resume when the rest after the last "*" does not match: one character further.
  std::size_t star = std::string_view::npos, resume = 0;
  while (n < name.size()) {
    if (p < pattern.size() && pattern[p] == '*') {
      star = ++p;
      resume = n;
    } else if (p < pattern.size() && (pattern[p] == '?' || folded(pattern[p]) == folded(name[n]))) {
      ++p;
      ++n;
    } else if (star != std::string_view::npos) {
      p = star;
      n = ++resume;
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p] == '*') ++p;
  return p == pattern.size();
}

Walk::Walk(WildcardPath what, bool recurse, Excluded excluded, OnError onError)
    : names_(std::move(what.names)),
      recurse_(recurse),
      excluded_(std::move(excluded)),
      onError_(std::move(onError)) {
  const std::string path = what.folder;
  enter(path, std::move(what.folder), "", true);
}

void Walk::enter(const std::string& path, std::string folder, std::string prefix, bool mayBeLink) {
  Level level{std::move(folder), std::move(prefix), {}, {}, 0};
  const auto gather = [&](const std::string& name, FileKind kind) {
    if (IsReservedLocalName(name)) return;
    if (kind == FileKind::folder ? !recurse_ : !matchesWildcard(names_, name)) return;
    if (kind != FileKind::folder && excluded_(level.folder, name)) return;
    if (level.text.size() + name.size() + 2 > std::numeric_limits<std::uint32_t>::max())
      throw std::bad_alloc();
    level.starts.push_back(static_cast<std::uint32_t>(level.text.size()));
    level.text += static_cast<char>(kind);
    level.text += name;
    level.text += '\0';
  };
  std::optional<std::system_error> failure;
  try {
    readFolder(path, mayBeLink, gather);
  } catch (const std::system_error& error) {
    failure = error;
  }
  if (failure && mayBeLink) throw *failure;
  const char* const text = level.text.c_str();
  std::sort(level.starts.begin(), level.starts.end(), [text](std::uint32_t a, std::uint32_t b) {
    return std::string_view(text + a + 1) < std::string_view(text + b + 1);
  });
  levels_.push_back(std::move(level));
  if (failure) onError_(failure->what());
}

std::optional<Walk::Item> Walk::next() {
  while (!levels_.empty()) {
    Level& level = levels_.back();
    if (level.at == level.starts.size()) {
      levels_.pop_back();
      continue;
    }
    const char* const entry = level.text.c_str() + level.starts[level.at++];
    const auto kind = static_cast<FileKind>(*entry);
    const std::string name = entry + 1;
    Item item{level.folder + name, level.prefix + name, kind == FileKind::folder};
    if (kind == FileKind::link) {
      onError_("not packed, since it is a link: " + item.path);
    } else if (kind == FileKind::special) {
      onError_("not packed, since it is a special file: " + item.path);
    } else if (kind == FileKind::folder) {
      item.name += '/';
      // Adding a level may invalidate `level`.
      enter(item.path, item.path + kLocalSeparator, item.name, false);
      return item;
    } else {
      return item;
    }
  }
  return std::nullopt;
}

}  // namespace quillmoor::zip
