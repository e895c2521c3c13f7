#include "controls/UserHoldsEventLoop.h"

#include <gtk/gtk.h>

namespace quillmoor {

/// Menus and dropped lists grab the input; boxes do, too.
bool UserHoldsEventLoop() {
  return gtk_grab_get_current() != nullptr;
}

}  // namespace quillmoor
