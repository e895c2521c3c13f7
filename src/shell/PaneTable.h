// The five panes of the main window.
#pragma once

#include <array>

namespace quillmoor {

struct Pane {
  int id;
  int width, height;  // wished for, in device-independent pixels; one that is dragged out gets half the room
  int side;           // a docking frame's number for it; in one tab group there is only one
  int neighbour;      // id of the pane in whose tab group it stands; 0: it opens a group of its own
  const char* title;
  const char* picture;  // 32 x 32, below assets/
};

inline constexpr int kProfilesPane = 2;
inline constexpr int kBackupPane = 3;
inline constexpr int kSettingsPane = 4;
inline constexpr int kOptionsPane = 5;
inline constexpr int kHelpPane = 8;

/// In the order in which they are made.
inline constexpr std::array<Pane, 5> kPanes = {
    {{kProfilesPane, 400, 450, 1, 0, "Profiles", "panes/profiles"},
     {kBackupPane, 400, 150, 1, kProfilesPane, "Backup", "panes/backup"},
     {kSettingsPane, 400, 150, 1, kBackupPane, "Settings", "panes/settings"},
     {kOptionsPane, 400, 150, 1, kSettingsPane, "Options", "panes/options"},
     {kHelpPane, 400, 150, 1, kOptionsPane, "Help", "panes/help"}}};

}  // namespace quillmoor
