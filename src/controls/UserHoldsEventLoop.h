// What the user does in event loops of the toolkit's or the system's own.
#pragma once

namespace quillmoor {

/// A menu or a dropped list is open, on GTK also a box; on Windows a window is being moved or sized, or a
/// control has captured the mouse. Whatever takes long must not begin then: events still arrive, but what is
/// open cannot be closed before it has ended.
bool UserHoldsEventLoop();

}  // namespace quillmoor
