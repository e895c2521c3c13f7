#include "connectivity/mNetworkConnection.h"

namespace quillmoor {

bool IsNetworkAvailable(const NetworkSource& source) {
  std::uint32_t kinds = 0;
  return source(kinds);
}

bool IsLanConnected(const NetworkSource& source) {
  std::uint32_t kinds = 0;
  return source(kinds) && kinds == kNetworkLan;
}

}  // namespace quillmoor
