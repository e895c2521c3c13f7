#include "platform/net/KeepAlive.h"

#include <winsock2.h>

#include <mstcpip.h>

namespace quillmoor {

bool KeepConnectionAlive(std::uintptr_t socket, std::chrono::seconds interval) {
  const auto milliseconds = static_cast<ULONG>(std::chrono::milliseconds(interval).count());
  tcp_keepalive values{1, milliseconds, milliseconds};
  DWORD answered = 0;
  return ::WSAIoctl(static_cast<SOCKET>(socket), SIO_KEEPALIVE_VALS, &values, sizeof values, nullptr, 0,
                    &answered, nullptr, nullptr) == 0;
}

}  // namespace quillmoor
