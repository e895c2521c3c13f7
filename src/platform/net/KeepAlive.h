// TCP keep-alive: probes on an idle connection.
#pragma once

#include <chrono>
#include <cstdint>

namespace quillmoor {

/// Makes the system probe the connection after `interval` without traffic, and again at that interval until
/// there is an answer; the default is hours, after which firewalls have dropped the connection. `socket` is
/// the system's handle of a TCP socket. False when the system refuses; the socket is usable all the same.
bool KeepConnectionAlive(std::uintptr_t socket, std::chrono::seconds interval);

}  // namespace quillmoor
