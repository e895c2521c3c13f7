// Where the desktop shows the notifications of this program.
#pragma once

#include <wx/taskbar.h>

namespace quillmoor {

/// Beside this icon, which stays the caller's and must be taken back with nullptr before it goes. Without one
/// a desktop that needs an icon shows a second one for as long as the notification lasts. Nothing happens on
/// a desktop that needs none.
void ShowNotificationsAt(wxTaskBarIcon* icon);

}  // namespace quillmoor
