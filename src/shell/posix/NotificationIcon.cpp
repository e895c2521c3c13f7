#include "shell/NotificationIcon.h"

namespace quillmoor {

void ShowNotificationsAt(wxTaskBarIcon*) {}

}  // namespace quillmoor
