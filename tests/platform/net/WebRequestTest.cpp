// The web request against a scripted server: which answers count, how long it waits, how it ends.
#include "platform/net/WebRequest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>

#include "support/ScriptedHttpServer.h"

namespace quillmoor {
namespace {

using testing::httpAnswer;
using Then = testing::ScriptedHttpServer::Then;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::SizeIs;
using ::testing::StartsWith;
using Clock = std::chrono::steady_clock;
constexpr std::int32_t kShortMs = 300;     // for what is to time out
constexpr std::int32_t kAmpleMs = 60'000;  // for what is not

class WebRequestTest : public ::testing::Test {
 protected:
  WebRequestTest() { web.timeoutMs = kAmpleMs; }

  std::int32_t statusOf(const std::string& address) {
    web.request.address = address;
    web.perform();
    return web.response.statusCode;
  }
  std::string withoutScheme(const std::string& path) {
    return "127.0.0.1:" + std::to_string(server.port()) + path;
  }

  testing::ScriptedHttpServer server;
  HttpRequest web;
};

TEST_F(WebRequestTest, ReturnsTheStatusOfTheFinalAnswer) {
  const std::string chunked = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
  const struct {
    const char* name;
    std::string bytes;
    std::int32_t status;
  } cases[] = {
      {"without a length", "HTTP/1.0 200 OK\r\n\r\nhello", 200},
      {"no body", "HTTP/1.1 204 No Content\r\n\r\n", 204},
      {"refused", httpAnswer("404 Not Found", "gone"), 404},
      {"a redirect, not followed", httpAnswer("302 Found", "", "Location: " + server.address("/ok") + "\r\n"),
       302},
      {"after a hint", "HTTP/1.1 103 Early Hints\r\n\r\n" + httpAnswer("200 OK"), 200},
      {"a hint alone", "HTTP/1.1 103 Early Hints\r\n\r\n", 0},
      {"the body breaks off", "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nhel", 200},
      {"the body is garbled", chunked + "zz\r\n", 200},
      {"the header breaks off", "HTTP/1.1 200 OK\r\nContent-Le", 0},
      {"no HTTP", "SSH-2.0-nothing\r\n", 0},
      {"nothing", "", 0},
  };
  server.answer("/ok", httpAnswer("200 OK"));
  for (const auto& c : cases) {
    server.answer("/case", c.bytes);
    EXPECT_EQ(statusOf(server.address("/case")), c.status) << c.name;
  }
  EXPECT_THAT(server.requests(), SizeIs(std::size(cases)))
      << "a redirect was followed, or a request repeated";
}

TEST_F(WebRequestTest, SendsAPlainGetOrTheTextGiven) {
  server.answer("/hook?done=1", httpAnswer("200 OK"));
  EXPECT_EQ(statusOf(server.address("/hook?done=1#here")), 200);
  web.request.body = "text";
  EXPECT_EQ(statusOf(server.address("/hook?done=1")), 200);
  ASSERT_THAT(server.requests(), SizeIs(2));
  EXPECT_THAT(server.requests()[0], StartsWith("GET /hook?done=1 HTTP/1.1\r\n"));
  EXPECT_THAT(server.requests()[0], HasSubstr("\r\nUser-Agent: Quillmoor\r\n"));
  EXPECT_THAT(server.requests()[1], StartsWith("POST /hook?done=1 HTTP/1.1\r\n"));
  EXPECT_THAT(server.requests()[1], EndsWith("\r\n\r\ntext"));
}

TEST_F(WebRequestTest, ReadsAddressesAsABrowserWould) {
  server.answer("/", httpAnswer("200 OK"));
  server.answer("/a%20b?c=d+%c3%a9", httpAnswer("200 OK"));
  server.answer("/?to=http://other/", httpAnswer("200 OK"));
  for (const char* const path : {"", "/", "/a b?c=d \xC3\xA9", "/a%20b?c=d+%c3%a9", "/?to=http://other/"}) {
    EXPECT_EQ(statusOf(withoutScheme(path)), 200) << path;
    EXPECT_EQ(statusOf(" HTTP://" + withoutScheme(path) + "\r\n"), 200) << path;
  }
}

TEST_F(WebRequestTest, CallsNothingButHttp) {
  web.response.statusCode = 200;  // of a request before
  const std::string elsewhere = withoutScheme("/");
  for (const std::string& address :
       {std::string(" "), "ftp://" + elsewhere, "telnet://" + elsewhere, "dict://" + elsewhere,
        std::string("http://"), std::string("file:///etc/passwd"), std::string("http://127.0.0.1:x/"),
        std::string("http://[::1/"), std::string("javascript:alert(1)"), std::string("http://127.0.0.1:1/"),
        "http://" + elsewhere + std::string("\0x", 2)}) {
    EXPECT_EQ(statusOf(address), 0) << address;
  }
  EXPECT_THAT(server.requests(), ::testing::IsEmpty());
}

TEST_F(WebRequestTest, WaitsNoLongerThanItMay) {
  server.answer("/silent", "", Then::silence);
  server.answer("/slow", "HTTP/1.1 200 OK\r\n\r\nhel", Then::silence);
  web.timeoutMs = kShortMs;
  int turns = 0;
  web.pump = [&] { ++turns; };
  for (const char* path : {"/silent", "/slow"}) {
    turns = 0;
    for (int tries = 0; tries < 3 && turns < 10; ++tries) {  // other tests may take its turns
      turns = 0;
      const auto start = Clock::now();
      EXPECT_EQ(statusOf(server.address(path)), 0) << path;
      EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(kShortMs - 10)) << path;
    }
    EXPECT_GE(turns, 10) << path;
  }
}

TEST_F(WebRequestTest, ReadsNoMoreThanItsBoundOfWhatHasNoEnd) {
  server.answer("/body", "HTTP/1.1 200 OK\r\n\r\n", Then::repeat, std::string(1 << 16, 'x'));
  EXPECT_EQ(statusOf(server.address("/body")), 200);
  server.answer("/head", "HTTP/1.1 200 OK\r\n", Then::repeat, "X-More: " + std::string(1000, 'x') + "\r\n");
  EXPECT_EQ(statusOf(server.address("/head")), 0);
}

TEST_F(WebRequestTest, AnAbortEndsItAndTheNextRequestIsNotHarmed) {
  server.answer("/silent", "", Then::silence);
  server.answer("/", httpAnswer("200 OK"));
  bool wasBusy = false;
  web.pump = [&] {
    if (server.requests().empty()) return;
    wasBusy = web.busy();
    web.abort();
    EXPECT_THROW(web.perform(), std::logic_error) << "entered from inside its own pump";
  };
  EXPECT_EQ(statusOf(server.address("/silent")), 0);
  EXPECT_TRUE(wasBusy && !web.busy());
  web.pump = nullptr;
  web.abort();  // there is nothing to abort
  EXPECT_EQ(statusOf(server.address("/")), 200);
}

TEST_F(WebRequestTest, PassesOnWhatThePumpRaises) {
  server.answer("/silent", "", Then::silence);
  web.pump = [] { throw std::runtime_error("the window is gone"); };
  EXPECT_THROW(statusOf(server.address("/silent")), std::runtime_error);
  EXPECT_FALSE(web.busy());
}

}  // namespace
}  // namespace quillmoor
