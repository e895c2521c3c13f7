// What the user does in event loops of the toolkit's or the system's own.
#pragma once

namespace quillmoor {

/// A menu is open or, on Windows, a window is being moved, sized or scrolled by the mouse. Whatever takes
/// long must not begin then: events still arrive, but the menu cannot be closed before it has ended.
bool UserHoldsEventLoop();

}  // namespace quillmoor
