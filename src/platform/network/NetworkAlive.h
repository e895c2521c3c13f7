// The networks that this machine is on.
#pragma once

#include <cstdint>

namespace quillmoor {

/// True when some network is up; `kinds` then gets 1 for a local area network, 2 for a wide area one (a
/// point-to-point link), their sum where both are up, or what else the system tells, which may be 0. Without
/// a network, and when the system cannot say, it is left alone.
bool IsNetworkAlive(std::uint32_t& kinds);

}  // namespace quillmoor
