// Which panes share a tab group, and where the groups stand: as the user left it, kept as one line of text.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillmoor {

/// Panes behind one row of tabs, by their ids, in the order of the tabs.
struct PaneGroup {
  std::vector<int> panes;
  int shown = 0;  // the one whose tab is in front
  friend bool operator==(const PaneGroup&, const PaneGroup&) = default;
};

struct PaneLayout {
  std::vector<PaneGroup> groups;  // the first is the one that is always there
  std::string places;             // of the groups, in the words of the docking library
  friend bool operator==(const PaneLayout&, const PaneLayout&) = default;
};

/// The layout of a first start: groups as the table of panes says.
PaneLayout DefaultLayout();

/// "2,3*;4*,5,8 " and the places: groups apart by ";", the shown pane marked.
std::string WriteLayout(const PaneLayout& layout);

/// Nothing when the text is no layout of the panes there are: each of them once, every group with one shown,
/// places without control characters and within kLongestLayout.
std::optional<PaneLayout> ReadLayout(std::string_view text);

inline constexpr std::size_t kLongestLayout = 4000;  // bytes

}  // namespace quillmoor
