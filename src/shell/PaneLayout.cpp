#include "shell/PaneLayout.h"

#include <algorithm>
#include <charconv>

#include "shell/PaneTable.h"

namespace quillmoor {
namespace {

/// Removes the text up to and including the next `separator` from `text`; returns what precedes the
/// separator.
std::string_view nextPart(std::string_view& text, char separator) {
  const std::size_t end = std::min(text.find(separator), text.size());
  const std::string_view part = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return part;
}

std::optional<PaneGroup> readGroup(std::string_view text) {
  PaneGroup group;
  while (!text.empty()) {
    std::string_view item = nextPart(text, ',');
    const bool shown = item.ends_with('*');
    if (shown) item.remove_suffix(1);
    int id = 0;
    const auto [end, error] = std::from_chars(item.data(), item.data() + item.size(), id);
    if (error != std::errc() || end != item.data() + item.size()) return std::nullopt;
    if (shown && group.shown != 0) return std::nullopt;
    if (shown) group.shown = id;
    group.panes.push_back(id);
  }
  if (group.panes.empty() || group.shown == 0) return std::nullopt;
  return group;
}

bool holdsEveryPaneOnce(const std::vector<PaneGroup>& groups) {
  std::vector<int> held;
  for (const PaneGroup& group : groups) held.insert(held.end(), group.panes.begin(), group.panes.end());
  return held.size() == kPanes.size() && std::all_of(kPanes.begin(), kPanes.end(), [&](const Pane& pane) {
           return std::find(held.begin(), held.end(), pane.id) != held.end();
         });
}

}  // namespace

PaneLayout DefaultLayout() {
  PaneLayout layout;
  for (const Pane& pane : kPanes) {
    const auto group = std::find_if(layout.groups.begin(), layout.groups.end(), [&](const PaneGroup& one) {
      return std::find(one.panes.begin(), one.panes.end(), pane.neighbour) != one.panes.end();
    });
    if (group == layout.groups.end()) {
      layout.groups.push_back({{pane.id}, pane.id});
    } else {
      group->panes.push_back(pane.id);
    }
  }
  return layout;
}

std::string WriteLayout(const PaneLayout& layout) {
  std::string text;
  for (const PaneGroup& group : layout.groups) {
    if (!text.empty()) text += ';';
    for (std::size_t i = 0; i < group.panes.size(); ++i) {
      if (i != 0) text += ',';
      text += std::to_string(group.panes[i]);
      if (group.panes[i] == group.shown) text += '*';
    }
  }
  return text + ' ' + layout.places;
}

std::optional<PaneLayout> ReadLayout(std::string_view text) {
  if (text.size() > kLongestLayout) return std::nullopt;
  PaneLayout layout;
  std::string_view groups = nextPart(text, ' ');
  while (!groups.empty()) {
    const auto group = readGroup(nextPart(groups, ';'));
    if (!group) return std::nullopt;
    layout.groups.push_back(*group);
  }
  if (!holdsEveryPaneOnce(layout.groups)) return std::nullopt;
  const auto isControl = [](unsigned char c) { return c < 0x20 || c >= 0x7F; };
  if (std::any_of(text.begin(), text.end(), isControl)) return std::nullopt;
  layout.places = text;
  return layout;
}

}  // namespace quillmoor
