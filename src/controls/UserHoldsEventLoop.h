// Detects nested event loops of the toolkit or the system, such as that of an open menu.
#pragma once

namespace quillmoor {

/// Whether a menu or a drop-down list is open; on GTK also a dialog; on Windows also whether a window is
/// being moved or resized, or a control has captured the mouse. No long operation may start then: events
/// still arrive, but what is open could not be closed before the operation's end.
bool UserHoldsEventLoop();

}  // namespace quillmoor
