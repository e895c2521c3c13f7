// The system's dial-up connections, whichever program made them.
#pragma once

#include "platform/network/RemoteAccess.h"

namespace quillmoor::mRasAPI {

/// True when the first active connection is up. Deliberate: while the first is still being established, a
/// second one that is up is ignored.
bool IsDialUpConnected(RemoteAccess& system);

/// Ends the first active connection if it is up. True when the system reported an error, false otherwise and
/// when there was nothing to end.
bool HangUpDialUp(RemoteAccess& system);

}  // namespace quillmoor::mRasAPI
