// SOCKS: sessions of the FTP client through a proxy that does what a test tells it to.
#include "platform/net/SocksProxy.h"

#include "platform/ftp/FtpClientFixture.h"
#include "support/ScriptedSocksServer.h"

namespace quillmoor {
namespace {

using namespace testing;  // of this project
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using Script = ScriptedSocksServer::Script;
using Then = Script::Then;

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

TEST_F(SocksSessionTest, HasNoMessagesThatCannotBeMade) {
  const std::string longest(255, 'x'), tooLong(256, 'x');
  const auto connect = SocksCommand::connect;
  const auto four = [](const std::string& user) { return SocksLogin{SocksVersion::v4, user, ""}; };
  EXPECT_EQ(socksRequest(connect, {}, {longest, 21}).size(), 4U + 1 + 255 + 2);
  const auto expectBad = [](const std::function<void()>& make) {
    try {
      make();
      ADD_FAILURE() << "a message was made";
    } catch (const NetError& error) {
      EXPECT_EQ(error.failure(), NetFailure::badArgument) << error.what();
    }
  };
  expectBad([&] { socksRequest(connect, {}, {tooLong, 21}); });
  expectBad([&] { socksRequest(connect, four(""), {tooLong, 21}); });
  expectBad([&] { socksRequest(connect, four(tooLong), {"a", 21}); });
  expectBad([&] { socksRequest(connect, four(std::string("a\0b", 3)), {"a", 21}); });
  expectBad([&] { socksRequest(connect, four(""), {"2001:db8::1", 21}); });
  expectBad([&] { socksPassword({SocksVersion::v5, tooLong, ""}); });
  expectBad([&] { socksPassword({SocksVersion::v5, "joe", tooLong}); });
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
      {FtpProxyType::socks4, 4, true, "joe", 1, "EPSV"},
      {FtpProxyType::socks4, 4, false, "", 2, "PORT"},
      {FtpProxyType::socks4, 4, true, "joe", 1, "EPSV", "127.0.0.1"},
      {FtpProxyType::socks5, 5, true, "", 1, "EPSV"},
      {FtpProxyType::socks5, 5, true, "joe", 1, "EPSV"},
      {FtpProxyType::socks5, 5, false, "joe", 2, "PORT"},
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
    client.getFile("/f", (folder / "f").string());
    EXPECT_EQ(contentsOf(folder / "f"), "hello");
    EXPECT_THAT(client.list().text, HasSubstr(" f\r\n"));
    client.logout();
    EXPECT_EQ(server.count(c.asked), askedBefore + 2);
    const auto requests = proxy.requests();
    ASSERT_EQ(requests.size(), before + 3);
    for (std::size_t i = before; i < requests.size(); ++i) {
      EXPECT_EQ(requests[i].version, c.version);
      EXPECT_EQ(requests[i].host, c.host);
      EXPECT_EQ(requests[i].userName, c.userName);
      EXPECT_EQ(requests[i].password, c.version == 5 && *c.userName ? "a=b/" : "");
      EXPECT_EQ(requests[i].command, i == before ? 1 : c.dataCommand);
    }
  }
  EXPECT_THAT(shownTexts(), Not(HasSubstr("rror")));
}

TEST_F(SocksSessionTest, ReachesAServerOverIPv6) {
  ScriptedFtpServer server6(true);
  server6.addFile("/f", "hello");
  client.proxyType = static_cast<std::int32_t>(FtpProxyType::socks5);
  for (const bool passive : {true, false}) {
    client.setPassive(passive);
    client.login("::1", "joe", "hunter22", "", server6.port());
    client.getFile("/f", (folder / "f").string());
    EXPECT_EQ(contentsOf(folder / "f"), "hello");
    EXPECT_EQ(server6.count(passive ? "EPSV" : "EPRT |2|::1|"), 1U);

    // Without another way to try, the error is that of the only one.
    proxy.set({.reply = bytes({5, 2, 0, 1, 0, 0, 0, 0, 0, 0})});
    const FtpError error = errorOf([&] { client.list(); });
    EXPECT_EQ(error.number(), number(FtpErrorNumber::dataConnectionFailed));
    EXPECT_THAT(error.what(), HasSubstr("the proxy says that its rules do not allow"));
    proxy.set({});
    client.logout();
  }
  EXPECT_EQ(server6.count("PASV"), 0U);
}

TEST_F(SocksSessionTest, TellsWhatTheProxyRefusesInPlainWords) {
  const auto five = [](int code) { return bytes({5, code, 0, 1, 0, 0, 0, 0, 0, 0}); };
  const auto four = [](int code) { return bytes({0, code, 0, 0, 0, 0, 0, 0}); };
  constexpr auto kV4 = FtpProxyType::socks4, kV5 = FtpProxyType::socks5;
  constexpr auto kRefused = FtpErrorNumber::proxyRefused, kBad = FtpErrorNumber::badReply,
                 kLost = FtpErrorNumber::connectionLost, kLate = FtpErrorNumber::timedOut;
  const struct {
    FtpProxyType type;
    const char* userName;
    Script script;
    FtpErrorNumber error;
    const char* words;
  } cases[] = {
      {kV5, "", {.reply = five(2)}, kRefused, "rules do not allow"},
      {kV5, "", {.reply = five(8)}, kRefused, "kind of address"},
      {kV5, "", {.reply = five(200)}, kRefused, "code 200"},
      {kV4, "", {.reply = four(0x5B)}, kRefused, "rejects the request"},
      {kV4, "", {.reply = four(0x5D)}, kRefused, "another user"},
      {kV4, "", {.reply = four(0)}, kRefused, "code 0"},
      // A refusal that is cut off behind its code is still one.
      {kV5, "", {.reply = bytes({5, 5})}, kRefused, "host refuses"},
      {kV5, "", {.greeting = bytes({5, 255})}, kRefused, "requires a login"},
      {kV5, "", {.greeting = bytes({5, 2})}, kRefused, "requires a login"},
      {kV5, "u", {.greeting = bytes({5, 255})}, kRefused, "takes neither"},
      {kV5, "u", {.greeting = bytes({5, 1})}, kRefused, "takes neither"},
      {kV5, "u", {.login = bytes({1, 1})}, kRefused, "password is wrong"},
      {kV5, "", {.greeting = "220 An FTP server.\r\n"}, kBad, "no SOCKS 5"},
      {kV5, "u", {.login = "550 what"}, kBad, "no SOCKS 5"},
      {kV5, "", {.reply = bytes({5, 0, 0, 9, 1})}, kBad, "no SOCKS 5"},
      {kV4, "", {.reply = "HTTP/1.1 400"}, kBad, "no SOCKS 4"},
      {kV4, "", {.reply = bytes({5, 255})}, kBad, "no SOCKS 4"},
      // Cut off.
      {kV5, "", {.greeting = ""}, kLost, "proxy closed"},
      {kV5, "", {.greeting = bytes({5})}, kLost, "proxy closed"},
      {kV5, "u", {.login = bytes({1})}, kLost, "proxy closed"},
      {kV5, "", {.reply = bytes({5, 0, 0})}, kLost, "proxy closed"},
      {kV5, "", {.reply = five(0).substr(0, 9)}, kLost, "proxy closed"},
      {kV4, "", {.reply = four(0x5A).substr(0, 7)}, kLost, "proxy closed"},
      // Silent, and so slow that it comes to the same.
      {kV5, "", {.greeting = bytes({5}), .then = Then::staySilent}, kLate, "did not answer"},
      {kV4, "", {.reply = four(0x5A).substr(0, 7), .then = Then::staySilent}, kLate, "did not answer"},
      {kV5, "", {.pause = std::chrono::milliseconds(kShortMs / 5)}, kLate, "did not answer"},
  };
  for (const auto& c : cases) {
    client.timeoutMs = c.error == FtpErrorNumber::timedOut ? kShortMs : 10'000;
    client.proxyUserName = c.userName;
    client.proxyPassword = "pw";
    proxy.set(c.script);
    const FtpError error = errorOf([&] { loginBy(c.type); });
    EXPECT_EQ(error.number(), number(c.error)) << c.words << ": " << error.what();
    EXPECT_THAT(error.what(), HasSubstr(c.words));
    EXPECT_THAT(error.what(), HasSubstr("Cannot connect to ftp.example.org through the proxy 127.0.0.1: "));
    EXPECT_EQ(client.state(), FtpState::closed);
  }
  EXPECT_THAT(server.commands(), ElementsAre());
}

TEST_F(SocksSessionTest, TakesEveryFormOfAGrantByteByByte) {
  constexpr std::chrono::milliseconds kPause(3);
  const std::pair<FtpProxyType, Script> cases[] = {
      // Repeats the version of the request.
      {FtpProxyType::socks4,
       {.reply = bytes({4, 0x5A, 0, 21, 0, 0, 0, 0}), .then = Then::goOn, .pause = kPause}},
      {FtpProxyType::socks5,
       {.reply = bytes({5, 0, 0, 3, 2, 'a', 'b', 0, 21}), .then = Then::goOn, .pause = kPause}},
      {FtpProxyType::socks5, {.reply = bytes({5, 0, 0, 3, 0, 0, 21}), .then = Then::goOn, .pause = kPause}},
      {FtpProxyType::socks5, {.pause = kPause}},
  };
  client.setPassive(false);
  client.proxyUserName = "u";
  int pumped = 0;
  client.pump = [&] { ++pumped; };
  for (const auto& [type, script] : cases) {
    proxy.set(script);
    pumped = 0;
    loginBy(type);
    EXPECT_GE(pumped, 2) << "7 bytes at least and 3 ms each";
    client.logout();
  }
  loginBy(FtpProxyType::socks5);
  client.getFile("/f", (folder / "f").string());
  EXPECT_EQ(contentsOf(folder / "f"), "hello");
}

TEST_F(SocksSessionTest, CanBeAbortedAnywhere) {
  const struct {
    Script script;
    int spare;  // 1: in a data connection
    bool passive = true;
  } cases[] = {{{.greeting = "", .then = Then::staySilent}, 0},
               {{.login = "", .then = Then::staySilent}, 0},
               {{.reply = bytes({5, 0}), .then = Then::staySilent}, 0},
               {{.reply = "", .then = Then::staySilent}, 1},
               {{.reply = "", .then = Then::staySilent}, 1, false}};
  client.proxyUserName = "u";
  for (const auto& c : cases) {
    client.pump = nullptr;
    client.setPassive(c.passive);
    proxy.set(c.script, c.spare);
    if (c.spare != 0) loginBy(FtpProxyType::socks5);
    const std::size_t before = proxy.requests().size();
    int pumped = 0;
    client.pump = [&] {
      if (++pumped >= 5 && (c.spare == 0 || proxy.requests().size() > before)) client.abort();
    };
    const auto start = Clock::now();
    const FtpError error = errorOf([&] {
      if (c.spare == 0) loginBy(FtpProxyType::socks5);
      client.list();
    });
    EXPECT_EQ(error.number(), number(FtpErrorNumber::aborted));
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(5));
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
       "accepts no incoming data connection (passive mode needs none): the proxy says"},
      {false,
       {.reply = bytes({5, 0, 0, 3, 1, 'a', 0, 21})},
       "Cannot receive a data connection through the proxy: the proxy does not say where"},
      {false, {.reply = ""}, "connection through the proxy: the proxy closed the connection"},
      {false, {.secondReply = refusal(1)}, "the proxy says that it failed"},
      {false, {.secondReply = ""}, "the proxy closed"},
      {false, {.secondReply = granted(192, 0, 2, 1)}, "another machine than the server"},
  };
  client.proxyType = static_cast<std::int32_t>(FtpProxyType::socks5);
  for (const auto& c : cases) {
    client.setPassive(c.passive);
    proxy.set(c.script, 1);
    client.login("127.0.0.1", "joe", "hunter22", "", server.port());
    const FtpError error = errorOf([&] { client.getFile("/f", (folder / "g").string()); });
    EXPECT_EQ(error.number(), number(FtpErrorNumber::dataConnectionFailed))
        << c.words << ": " << error.what();
    EXPECT_THAT(error.what(), HasSubstr(c.words));
    EXPECT_FALSE(std::filesystem::exists(folder / "g"));
    proxy.set({});
    client.getFile("/f", (folder / "f").string());
    EXPECT_EQ(contentsOf(folder / "f"), "hello") << "the session has kept its step: " << c.words;
    client.logout();
  }
}

TEST_F(SocksSessionTest, NamesTheProxysOwnAddressWhereItGivesNone) {
  proxy.set({.reply = bytes({5, 0, 0, 1, 0, 0, 0, 0, 0x12, 0x34}), .then = Then::staySilent}, 1);
  client.setPassive(false);
  loginBy(FtpProxyType::socks5);
  EXPECT_EQ(errorOf([&] { client.getFile("/f", (folder / "f").string()); }).number(), 425);
  EXPECT_EQ(server.count("PORT 127,0,0,1,18,52"), 1U);
}

TEST_F(SocksSessionTest, TellsAProxyThatIsNotThere) {
  { client.proxyPort = ScriptedSocksServer().port(); }
  const FtpError error = errorOf([&] { loginBy(FtpProxyType::socks5); });
  EXPECT_EQ(error.number(), number(FtpErrorNumber::connectFailed));
  EXPECT_THAT(error.what(), HasSubstr("Cannot connect to the proxy 127.0.0.1"));
}

}  // namespace
}  // namespace quillmoor
