// Sockets for the test servers: the few calls that differ between the systems.
#pragma once

#include <winsock2.h>
#include <ws2tcpip.h>

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace quillmoor::testing {

using SocketNumber = SOCKET;
inline constexpr SocketNumber kNoSocket = INVALID_SOCKET;
using PolledSocket = WSAPOLLFD;

inline SocketNumber newSocket(int family) {
  static const int started = [] {
    WSADATA data;
    return ::WSAStartup(MAKEWORD(2, 2), &data);
  }();
  return started == 0 ? ::socket(family, SOCK_STREAM, 0) : INVALID_SOCKET;
}
inline void closeSocketNumber(SocketNumber socket) {
  ::closesocket(socket);
}
/// Waits without end until one of them is ready.
inline void pollSockets(PolledSocket* polled, std::size_t count) {
  ::WSAPoll(polled, static_cast<ULONG>(count), -1);
}
/// What the system takes at once: 0 when it takes nothing now, below 0 when the other end is gone.
inline std::ptrdiff_t sendNow(SocketNumber socket, std::string_view bytes) {
  u_long on = 1;
  ::ioctlsocket(socket, static_cast<long>(FIONBIO), &on);
  const int size = static_cast<int>(std::min<std::size_t>(bytes.size(), 1 << 20));
  const int sent = ::send(socket, bytes.data(), size, 0);
  return sent < 0 && ::WSAGetLastError() == WSAEWOULDBLOCK ? 0 : sent == 0 ? -1 : sent;
}
inline std::ptrdiff_t receive(SocketNumber socket, char* bytes, std::size_t size) {
  return ::recv(socket, bytes, static_cast<int>(size), 0);
}
/// Whether a connection that was reset can be told from one that was closed. Wine cannot where a program
/// waits with select.
inline bool tellsResetFromEnd() {
  return ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "wine_get_version") == nullptr;
}
/// Seconds of silence after which the system probes a connection, and between the probes (TCP_KEEPIDLE and
/// TCP_KEEPINTVL); whether it tells.
inline constexpr int kProbeAfter = 3, kProbeEvery = 17;
inline bool tellsProbes() {
  return tellsResetFromEnd();  // Wine tells neither
}
inline int socketOption(SocketNumber socket, int level, int option) {
  int value = 0;
  socklen_t size = sizeof value;
  return ::getsockopt(socket, level, option, reinterpret_cast<char*>(&value), &size) == 0 ? value : -1;
}
template <class Value>
void setSocketOption(SocketNumber socket, int level, int option, const Value& value) {
  ::setsockopt(socket, level, option, reinterpret_cast<const char*>(&value), sizeof value);
}

}  // namespace quillmoor::testing
