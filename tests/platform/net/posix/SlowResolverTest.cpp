// A name server that does not answer must not hold up a web request: the system's resolver is replaced here
// by one that keeps silent about one name until the test ends.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <netdb.h>

#include <atomic>
#include <string_view>

#include "platform/net/WebRequest.h"

namespace {

std::atomic<int> asking = 0;
std::atomic<bool> over = false;

}  // namespace

extern "C" int getaddrinfo(const char* node, const char* service, const addrinfo* hints, addrinfo** result) {
  if (node && std::string_view(node) == "silent.test") {
    ++asking;
    over.wait(false);
    --asking;
    asking.notify_all();
    return EAI_AGAIN;
  }
  static const auto real = reinterpret_cast<decltype(&getaddrinfo)>(::dlsym(RTLD_NEXT, "getaddrinfo"));
  return real(node, service, hints, result);
}

namespace quillmoor {
namespace {

TEST(WebRequest, IsNotHeldUpByANameServer) {
  HttpRequest web;
  web.request.address = "http://silent.test/";
  web.timeoutMs = 1000;
  web.perform();
  EXPECT_EQ(web.response.statusCode, 0);
  EXPECT_EQ(asking, 1) << "timed out while it was being looked up";

  web.timeoutMs = 60'000;
  web.pump = [&] {
    if (asking == 2) web.abort();
  };
  web.perform();
  EXPECT_EQ(web.response.statusCode, 0);
  EXPECT_EQ(asking, 2) << "aborted while it was being looked up";
  over = true;
  over.notify_all();
  for (int still = asking; still != 0; still = asking) asking.wait(still);
}

}  // namespace
}  // namespace quillmoor
