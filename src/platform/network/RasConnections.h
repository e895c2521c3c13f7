// The records of RasEnumConnectionsA, whichever version of the system fills them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "platform/network/RemoteAccess.h"

namespace quillmoor {

/// Sizes in bytes of RASCONNA in the successive versions of the system, the newest first, with handles of 4
/// bytes. With handles of 8 bytes each is 4 bytes larger.
inline constexpr std::array<std::uint32_t, 4> kRasRecordSizes = {692, 676, 412, 32};

/// RasEnumConnectionsA: `records` begins with the size of one record; `bytes` is the size of the buffer, and
/// afterwards the size that is needed; the result is an error number. Raises nothing.
using RasEnumerate =
    std::function<std::uint32_t(std::byte* records, std::uint32_t& bytes, std::uint32_t& count)>;

/// Asks with each size until one is accepted, then once more with room for as many records as there are. No
/// connections when no size is accepted. `handleBytes`: 4 or 8.
std::vector<ActiveConnection> EnumerateRasConnections(const RasEnumerate& ask, std::size_t handleBytes);

}  // namespace quillmoor
