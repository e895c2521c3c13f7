// The five panes of the main window.
#pragma once

#include <array>

namespace quillmoor {

struct Pane {
  int id;
  int width, height;  // preferred, device-independent pixels; unused: a pane dragged out gets half the room
  int side;       // the docking frame's number of the side; the same for all, since they share a tab group
  int neighbour;  // id of a pane in the same tab group; 0: starts a new group
  const char* title;
  const char* picture;  // 32 x 32, below assets/
};

inline constexpr int kProfilesPane = 2;
inline constexpr int kBackupPane = 3;
inline constexpr int kSettingsPane = 4;
inline constexpr int kOptionsPane = 5;
inline constexpr int kHelpPane = 8;

/// In the order in which they are created.
inline constexpr std::array<Pane, 5> kPanes = {
    {{kProfilesPane, 400, 450, 1, 0, "Profiles", "panes/profiles"},
     {kBackupPane, 400, 150, 1, kProfilesPane, "Backup", "panes/backup"},
     {kSettingsPane, 400, 150, 1, kBackupPane, "Settings", "panes/settings"},
     {kOptionsPane, 400, 150, 1, kSettingsPane, "Options", "panes/options"},
     {kHelpPane, 400, 150, 1, kOptionsPane, "Help", "panes/help"}}};

}  // namespace quillmoor
