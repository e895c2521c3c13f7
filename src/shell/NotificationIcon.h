// The icon at which the desktop shows this program's notifications.
#pragma once

#include <wx/taskbar.h>

namespace quillmoor {

/// Shows notifications at this icon. The caller keeps ownership and must pass nullptr before destroying it.
/// Without an icon, Windows shows a second one while a notification is visible. Does nothing on desktops that
/// need no icon.
void ShowNotificationsAt(wxTaskBarIcon* icon);

}  // namespace quillmoor
