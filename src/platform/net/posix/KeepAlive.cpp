#include "platform/net/KeepAlive.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace quillmoor {

bool KeepConnectionAlive(std::uintptr_t socket, std::chrono::seconds interval) {
  const auto set = [&](int level, int option, int value) {
    return ::setsockopt(static_cast<int>(socket), level, option, &value, sizeof value) == 0;
  };
  const int seconds = static_cast<int>(interval.count());
  return set(SOL_SOCKET, SO_KEEPALIVE, 1) && set(IPPROTO_TCP, TCP_KEEPIDLE, seconds) &&
         set(IPPROTO_TCP, TCP_KEEPINTVL, seconds);
}

}  // namespace quillmoor
