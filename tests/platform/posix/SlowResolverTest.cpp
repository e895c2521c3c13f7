// A name server that does not answer must not keep a web request: here the system's resolver is replaced by
// one that knows a name about which it says nothing until it is told to.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <netdb.h>

#include <condition_variable>
#include <mutex>
#include <string_view>

#include "platform/WebRequest.h"

namespace {

struct Silence {
  std::mutex mutex;
  std::condition_variable changed;
  int asking = 0;
  bool over = false;

  void keep() {
    std::unique_lock lock(mutex);
    ++asking;
    changed.wait(lock, [&] { return over; });
    --asking;
    changed.notify_all();
  }
  int count() {
    const std::lock_guard lock(mutex);
    return asking;
  }
  void end() {
    std::unique_lock lock(mutex);
    over = true;
    changed.notify_all();
    changed.wait(lock, [&] { return asking == 0; });
  }
} silence;

}  // namespace

extern "C" int getaddrinfo(const char* node, const char* service, const addrinfo* hints, addrinfo** result) {
  if (node && std::string_view(node) == "silent.test") {
    silence.keep();
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
  EXPECT_EQ(silence.count(), 1) << "timed out while it was being looked up";

  web.timeoutMs = 60'000;
  web.pump = [&] {
    if (silence.count() == 2) web.abort();
  };
  web.perform();
  EXPECT_EQ(web.response.statusCode, 0);
  EXPECT_EQ(silence.count(), 2) << "aborted while it was being looked up";
  silence.end();
}

}  // namespace
}  // namespace quillmoor
