// The reply of a SOCKS proxy: an address, after no more bytes than the longest reply has; or a NetError.
#include <algorithm>

#include "Fuzz.h"
#include "platform/net/SocksProxy.h"

void quillmoor::tryInput(std::string_view input) {
  for (const SocksVersion version : {SocksVersion::v4, SocksVersion::v5}) {
    try {
      // As it is read: at most as many bytes as are known to belong to it.
      std::size_t have = 0;
      for (std::size_t whole = 0; (whole = socksReplyLength(version, input.substr(0, have))) > have;) {
        require(whole <= 4 + 1 + 255 + 2);
        if (have == input.size()) return;  // cut off
        have = std::min(input.size(), input[0] % 2 == 0 ? whole : have + 1);
      }
      require(socksReplyAddress(version, input.substr(0, have)).host.size() <= 255);
    } catch (const NetError& error) {
      require(error.what()[0] != '\0');
    }
  }
}
