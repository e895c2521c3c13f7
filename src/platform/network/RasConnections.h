// Decodes the records of RasEnumConnectionsA from any version of Windows.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "platform/network/RemoteAccess.h"

namespace quillmoor {

/// Sizes in bytes of RASCONNA in the versions of Windows, newest first, with 4-byte handles. With 8-byte
/// handles each is 4 bytes larger.
inline constexpr std::array<std::uint32_t, 4> kRasRecordSizes = {692, 676, 412, 32};

/// RasEnumConnectionsA: `records` begins with the size of one record; `bytes` is the buffer size, on return
/// the size needed; returns an error code. Raises nothing.
using RasEnumerate =
    std::function<std::uint32_t(std::byte* records, std::uint32_t& bytes, std::uint32_t& count)>;

/// Tries each record size until one is accepted, then calls again with room for all records. Empty when no
/// size is accepted. `handleBytes`: 4 or 8.
std::vector<ActiveConnection> EnumerateRasConnections(const RasEnumerate& ask, std::size_t handleBytes);

}  // namespace quillmoor
