// Which panes share a tab group, and where the groups are, stored as one line of text.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillmoor {

/// The ids of the panes in one tab group, in the order of the tabs.
struct PaneGroup {
  std::vector<int> panes;
  int shown = 0;  // the pane whose tab is in front
  friend bool operator==(const PaneGroup&, const PaneGroup&) = default;
};

struct PaneLayout {
  std::vector<PaneGroup> groups;  // the first always exists
  std::string places;             // of the groups, in the docking library's format
  friend bool operator==(const PaneLayout&, const PaneLayout&) = default;
};

/// The layout of a first start, with the groups defined by kPanes.
PaneLayout DefaultLayout();

/// "2,3*;4*,5,8 " followed by the places: groups are separated by ";", "*" marks the shown pane.
std::string WriteLayout(const PaneLayout& layout);

/// Nothing unless the text is a valid layout: every pane exactly once, one shown pane in every group,
/// printable ASCII only, at most kLongestLayout bytes.
std::optional<PaneLayout> ReadLayout(std::string_view text);

inline constexpr std::size_t kLongestLayout = 4000;  // bytes

}  // namespace quillmoor
