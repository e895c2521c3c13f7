// Dial-up connections of the whole system, whoever made them.
#pragma once

#include "platform/network/RemoteAccess.h"

namespace quillmoor::mRasAPI {

/// True when the first active connection is up. Only the first one counts: behind one that is still coming
/// up, a second that is up is not seen.
bool IsDialUpConnected(RemoteAccess& system);

/// Ends the first active connection if it is up. True when the system reported an error at that, false
/// otherwise, and also when there was nothing to end.
bool HangUpDialUp(RemoteAccess& system);

}  // namespace quillmoor::mRasAPI
