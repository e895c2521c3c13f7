// What a SOCKS proxy answers, any bytes at all, is a reply of the length announced or a NetError, never
// anything else.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "platform/net/SocksProxy.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quillmoor;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  for (const SocksVersion version : {SocksVersion::v4, SocksVersion::v5}) {
    try {
      // As it is read: so many bytes at most as are known to belong to it.
      std::size_t have = 0;
      for (std::size_t whole = 0; (whole = socksReplyLength(version, bytes.substr(0, have))) > have;) {
        if (whole > 4 + 1 + 255 + 2) std::abort();
        if (have == size) return 0;  // cut off
        have = std::min(size, data[0] % 2 == 0 ? whole : have + 1);
      }
      const SocksAddress address = socksReplyAddress(version, bytes.substr(0, have));
      if (address.host.size() > 255) std::abort();
    } catch (const NetError& error) {
      if (error.what()[0] == '\0') std::abort();
    }
  }
  return 0;
}
