// Sessions of the FTP client through a scripted SOCKS proxy.
#include "platform/net/SocksProxy.h"

#include "platform/ftp/FtpClientFixture.h"
#include "support/ScriptedSocksServer.h"

namespace quillmoor {
namespace {

using namespace testing;  // of this project
using ::testing::_;
using ::testing::ElementsAre;
using ::testing::FieldsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
using Script = ScriptedSocksServer::Script;
using Then = Script::Then;
using enum FtpProxyType;

std::string bytes(std::initializer_list<int> values) {
  std::string text;
  for (const int value : values) text += static_cast<char>(value);
  return text;
}

class SocksSessionTest : public FtpClientTest {
 protected:
  SocksSessionTest() {
    client.proxyHost = "127.0.0.1";
    client.proxyPort = proxy.port();
    server.addFile("/f", "hello");
  }
  static constexpr const char* kHost = "ftp.example.org";
  void loginBy(FtpProxyType type, const std::string& host = kHost) {
    client.proxyType = static_cast<std::int32_t>(type);
    client.login(host, "joe", "hunter22", "", server.port());
  }

  ScriptedSocksServer proxy;
};

TEST_F(SocksSessionTest, RefusesWhatNoMessageCanHold) {
  const std::string tooLong(256, 'x');
  const struct {
    FtpProxyType type;
    std::string userName, password, host;
  } cases[] = {{socks5, "", "", tooLong},
               {socks4, "", "", tooLong},
               {socks4, "", "", "2001:db8::1"},
               {socks4, tooLong, "", kHost},
               {socks5, tooLong, "", kHost},
               {socks5, "joe", tooLong, kHost},
               {socks4, std::string("a\0b", 3), "", kHost}};
  for (const auto& c : cases) {
    client.proxyUserName = c.userName;
    client.proxyPassword = c.password;
    EXPECT_EQ(numberOf([&] { loginBy(c.type, c.host); }), number(badArgument)) << c.host;
  }
  const std::string longest(255, 'x');
  client.proxyUserName = client.proxyPassword = longest;
  loginBy(socks5, longest);
  EXPECT_EQ(proxy.requests().back().host + proxy.requests().back().password, longest + longest);
}

TEST_F(SocksSessionTest, LeadsEveryConnectionThroughTheProxy) {
  const struct {
    FtpProxyType type;
    int version;
    bool passive;
    const char* userName;
    int dataCommand;
    const char* asked;
    const char* host = kHost;  // a name: the proxy looks it up
  } cases[] = {
      {socks4, 4, true, "joe", 1, "EPSV"},
      {socks4, 4, false, "", 2, "PORT"},
      {socks4, 4, true, "joe", 1, "EPSV", "127.0.0.1"},
      {socks5, 5, true, "", 1, "EPSV"},
      {socks5, 5, true, "joe", 1, "EPSV"},
      {socks5, 5, false, "joe", 2, "PORT"},
  };
  for (const auto& c : cases) {
    const std::size_t before = proxy.requests().size();
    const std::size_t askedBefore = server.count(c.asked);
    client.setPassive(c.passive);
    client.proxyUserName = c.userName;
    client.proxyPassword = "a=b/";
    loginBy(c.type, c.host);
    client.sendAhead({"TYPE I"}, true);
    client.command("TYPE I");
    EXPECT_EQ(fetched(), "hello");
    EXPECT_THAT(client.list().text, HasSubstr(" f\r\n"));
    client.logout();
    EXPECT_EQ(server.count(c.asked), askedBefore + 2);
    const auto requests = proxy.requests();
    ASSERT_EQ(requests.size(), before + 3);
    for (std::size_t i = before; i < requests.size(); ++i) {
      const char* const password = c.version == 5 && *c.userName ? "a=b/" : "";
      EXPECT_THAT(requests[i],
                  FieldsAre(c.version, i == before ? 1 : c.dataCommand, c.host, _, c.userName, password));
    }
  }
  EXPECT_THAT(shownTexts(), Not(HasSubstr("rror")));
}

TEST_F(SocksSessionTest, ReachesAServerOverIPv6) {
  ScriptedFtpServer server6(true);
  server6.addFile("/f", "hello");
  client.proxyType = static_cast<std::int32_t>(socks5);
  for (const bool passive : {true, false}) {
    client.setPassive(passive);
    client.login("::1", "joe", "hunter22", "", server6.port());
    EXPECT_EQ(fetched(), "hello");
    EXPECT_EQ(server6.count(passive ? "EPSV" : "EPRT |2|::1|"), 1U);

    // Without another way to try, the error is that of the only one.
    proxy.set({.reply = bytes({5, 2, 0, 1, 0, 0, 0, 0, 0, 0})});
    const FtpError error = errorOf([&] { client.list(); });
    EXPECT_EQ(error.number(), number(dataConnectionFailed));
    EXPECT_THAT(error.what(), HasSubstr("the proxy says that its rules do not allow"));
    proxy.set({});
    client.logout();
  }
  EXPECT_EQ(server6.count("PASV"), 0U);
}

TEST_F(SocksSessionTest, SaysWhatTheProxyRefuses) {
  const auto five = [](int code) { return bytes({5, code, 0, 1, 0, 0, 0, 0, 0, 0}); };
  const auto four = [](int code) { return bytes({0, code, 0, 0, 0, 0, 0, 0}); };
  const struct {
    FtpProxyType type;
    const char* userName;
    Script script;
    FtpErrorNumber error;
    const char* words;
  } cases[] = {
      {socks5, "", {.reply = five(2)}, proxyRefused, "rules do not allow"},
      {socks4, "", {.reply = four(0x5B)}, proxyRefused, "rejects the request"},
      {socks4, "", {.reply = four(0)}, proxyRefused, "code 0"},
      // A refusal that is cut off after its code is still one.
      {socks5, "", {.reply = bytes({5, 5})}, proxyRefused, "host refuses"},
      {socks5, "", {.greeting = bytes({5, 255})}, proxyRefused, "requires a login"},
      {socks5, "u", {.greeting = bytes({5, 255})}, proxyRefused, "accepts neither"},
      {socks5, "u", {.login = bytes({1, 1})}, proxyRefused, "password is wrong"},
      {socks5, "", {.greeting = "220 An FTP server.\r\n"}, badReply, "not a SOCKS 5"},
      {socks5, "", {.reply = bytes({5, 0, 0, 9, 1})}, badReply, "not a SOCKS 5"},
      {socks4, "", {.reply = "HTTP/1.1 400"}, badReply, "not a SOCKS 4"},
      // Cut off.
      {socks5, "", {.reply = five(0).substr(0, 9)}, connectionLost, "proxy closed"},
      {socks4, "", {.reply = four(0x5A).substr(0, 7)}, connectionLost, "proxy closed"},
      // Silent, or too slow.
      {socks4, "", {.reply = four(0x5A).substr(0, 7), .then = Then::staySilent}, timedOut, "did not answer"},
      {socks5, "", {.pause = std::chrono::milliseconds(kShortMs / 5)}, timedOut, "did not answer"},
  };
  for (const auto& c : cases) {
    client.timeoutMs = c.error == timedOut ? kShortMs : 10'000;
    client.proxyUserName = c.userName;
    proxy.set(c.script);
    const FtpError error = errorOf([&] { loginBy(c.type); });
    EXPECT_EQ(error.number(), number(c.error)) << c.words << ": " << error.what();
    EXPECT_THAT(error.what(), HasSubstr(c.words));
    EXPECT_THAT(error.what(), StartsWith("Cannot connect to ftp.example.org through the proxy 127.0.0.1: "));
    EXPECT_EQ(client.state(), FtpState::closed);
  }
  EXPECT_THAT(server.commands(), ElementsAre());
}

TEST_F(SocksSessionTest, TakesEveryFormOfAGrantByteByByte) {
  const std::pair<FtpProxyType, std::string> cases[] = {
      {socks4, bytes({4, 0x5A, 0, 21, 0, 0, 0, 0})},  // repeats the version of the request
      {socks5, bytes({5, 0, 0, 3, 2, 'a', 'b', 0, 21})},
      {socks5, bytes({5, 0, 0, 3, 0, 0, 21})},
  };
  client.proxyUserName = "u";
  for (const auto& [type, grant] : cases) {
    proxy.set({.reply = grant, .then = Then::goOn, .pause = std::chrono::milliseconds(3)});
    loginBy(type);
    client.logout();
  }
  proxy.set({.pause = std::chrono::milliseconds(3)});
  client.setPassive(false);
  loginBy(socks5);
  EXPECT_EQ(fetched(), "hello");
}

TEST_F(SocksSessionTest, CanBeAbortedInADataConnection) {
  for (const bool passive : {true, false}) {
    client.pump = nullptr;
    client.setPassive(passive);
    proxy.set({.reply = "", .then = Then::staySilent}, 1);
    loginBy(socks5);
    const std::size_t before = proxy.requests().size();
    client.pump = [&] {
      if (proxy.requests().size() > before) client.abort();
    };
    EXPECT_EQ(numberOf([&] { client.list(); }), number(aborted));
    EXPECT_EQ(client.state(), FtpState::closed);
  }
}

TEST_F(SocksSessionTest, KeepsTheSessionWhenADataConnectionFails) {
  const auto refusal = [](int code) { return bytes({5, code, 0, 1, 0, 0, 0, 0, 0, 0}); };
  const auto granted = [](int a, int b, int c, int d) { return bytes({5, 0, 0, 1, a, b, c, d, 0x10, 0}); };
  const struct {
    bool passive;
    Script script;
    const char* words;
  } cases[] = {
      {true, {.reply = refusal(2)}, "the proxy says that its rules do not allow"},
      {true, {.reply = ""}, "the proxy closed the connection"},
      {false,
       {.reply = refusal(7)},
       "accepts no incoming data connection (passive mode needs none): the proxy"},
      {false, {.reply = bytes({5, 0, 0, 3, 1, 'a', 0, 21})}, "through the proxy: the proxy does not say"},
      {false, {.reply = ""}, "through the proxy: the proxy closed the connection"},
      {false, {.secondReply = refusal(1)}, "the proxy says that it failed"},
      {false, {.secondReply = ""}, "the proxy closed"},
      {false, {.secondReply = granted(192, 0, 2, 1)}, "a machine other than the server"},
  };
  client.proxyType = static_cast<std::int32_t>(socks5);
  for (const auto& c : cases) {
    client.setPassive(c.passive);
    proxy.set(c.script, 1);
    client.login("127.0.0.1", "joe", "hunter22", "", server.port());
    const FtpError error = errorOf([&] { fetched(); });
    EXPECT_EQ(error.number(), number(dataConnectionFailed)) << c.words << ": " << error.what();
    EXPECT_THAT(error.what(), HasSubstr(c.words));
    proxy.set({});
    EXPECT_EQ(fetched(), "hello") << "the session has kept its step: " << c.words;
    client.logout();
  }
}

TEST_F(SocksSessionTest, NamesTheProxysAddressWhereItReturnsNone) {
  proxy.set({.reply = bytes({5, 0, 0, 1, 0, 0, 0, 0, 0x12, 0x34}), .then = Then::staySilent}, 1);
  client.setPassive(false);
  loginBy(socks5);
  EXPECT_EQ(numberOf([&] { fetched(); }), 425);
  EXPECT_EQ(server.count("PORT 127,0,0,1,18,52"), 1U);
}

}  // namespace
}  // namespace quillmoor
