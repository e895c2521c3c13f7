// Whether this machine is connected to a network.
#pragma once

#include <cstdint>

namespace quillmoor {

/// True when a network is up; `kinds` is then 1 for a local area network, 2 for a wide area network (a
/// point-to-point link), their sum when both are up, or another value from the system, which may be 0.
/// Without a network, or when the system reports none, `kinds` is unchanged.
bool IsNetworkAlive(std::uint32_t& kinds);

}  // namespace quillmoor
