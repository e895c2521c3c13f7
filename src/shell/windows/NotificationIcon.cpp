#include "shell/NotificationIcon.h"

#include <wx/notifmsg.h>

namespace quillmoor {

void ShowNotificationsAt(wxTaskBarIcon* icon) {
  wxNotificationMessage::UseTaskBarIcon(icon);
}

}  // namespace quillmoor
