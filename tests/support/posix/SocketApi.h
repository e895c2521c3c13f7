// Sockets for the test servers: the few calls that differ between the systems.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <string_view>

namespace quillmoor::testing {

using SocketNumber = int;
inline constexpr SocketNumber kNoSocket = -1;
using PolledSocket = pollfd;

inline SocketNumber newSocket(int family) {
  return ::socket(family, SOCK_STREAM | SOCK_CLOEXEC, 0);
}
inline void closeSocketNumber(SocketNumber socket) {
  ::close(socket);
}
/// Waits without end until one of them is ready.
inline void pollSockets(PolledSocket* polled, std::size_t count) {
  while (::poll(polled, count, -1) < 0 && errno == EINTR) {
  }
}
/// What the system takes at once: 0 when it takes nothing now, below 0 when the other end is gone.
inline std::ptrdiff_t sendNow(SocketNumber socket, std::string_view bytes) {
  const ssize_t sent = ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
  return sent < 0 && (errno == EAGAIN || errno == EINTR) ? 0 : sent == 0 ? -1 : sent;
}
inline std::ptrdiff_t receive(SocketNumber socket, char* bytes, std::size_t size) {
  return ::recv(socket, bytes, size, 0);
}
/// Whether a connection that was reset can be told from one that was closed.
inline bool tellsResetFromEnd() {
  return true;
}
/// Seconds of silence after which the system probes a connection, and between the probes; whether it tells.
inline constexpr int kProbeAfter = TCP_KEEPIDLE, kProbeEvery = TCP_KEEPINTVL;
inline bool tellsProbes() {
  return true;
}
inline int socketOption(SocketNumber socket, int level, int option) {
  int value = 0;
  socklen_t size = sizeof value;
  return ::getsockopt(socket, level, option, &value, &size) == 0 ? value : -1;
}
template <class Value>
void setSocketOption(SocketNumber socket, int level, int option, const Value& value) {
  ::setsockopt(socket, level, option, &value, sizeof value);
}

}  // namespace quillmoor::testing
