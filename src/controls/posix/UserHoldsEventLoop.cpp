#include "controls/UserHoldsEventLoop.h"

#include <gtk/gtk.h>

namespace quillmoor {

/// Menus, drop-down lists and dialogs grab the input.
bool UserHoldsEventLoop() {
  return gtk_grab_get_current() != nullptr;
}

}  // namespace quillmoor
