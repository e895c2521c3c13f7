// TCP keep-alive: probes over a connection that is silent for long.
#pragma once

#include <chrono>
#include <cstdint>

namespace quillmoor {

/// Has the system probe the connection after so much silence, and as often again while nobody answers; its
/// own default is hours, when firewalls have long forgotten the connection. `socket` is the system's handle
/// of a TCP socket. False where the system refuses; the socket is as usable as before.
bool KeepConnectionAlive(std::uintptr_t socket, std::chrono::seconds interval);

}  // namespace quillmoor
