// SOCKS: the messages byte by byte, and sessions of the FTP client through a proxy that does what a test
// tells it to.
#include "platform/SocksProxy.h"

#include "platform/FtpClientFixture.h"
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

/// What a message of the given maker costs in errors; 0 for none.
template <class Make>
int errorNumber(Make make) {
  try {
    make();
  } catch (const FtpError& error) {
    return error.number();
  }
  return 0;
}

// --- bytes

TEST(SocksMessages, AreTheBytesOfTheProtocols) {
  const SocksLogin four{SocksVersion::v4, "joe", ""}, nobody4{SocksVersion::v4, "", ""};
  const SocksLogin five{SocksVersion::v5, "joe", "pw"}, nobody5{SocksVersion::v5, "", ""};
  const auto connect = SocksCommand::connect;
  const struct {
    const char* name;
    std::string made, expected;
  } cases[] = {
      {"4", socksRequest(connect, four, {"192.0.2.1", 21}),
       bytes({4, 1, 0, 21, 192, 0, 2, 1, 'j', 'o', 'e', 0})},
      {"4a", socksRequest(connect, nobody4, {"ab.c", 0x1234}),
       bytes({4, 1, 0x12, 0x34, 0, 0, 0, 1, 0, 'a', 'b', '.', 'c', 0})},
      {"4, bind", socksRequest(SocksCommand::bind, nobody4, {"192.0.2.1", 21}),
       bytes({4, 2, 0, 21, 192, 0, 2, 1, 0})},
      {"5, greeting", socksGreeting(nobody5), bytes({5, 1, 0})},
      {"5, greeting with a login", socksGreeting(five), bytes({5, 2, 0, 2})},
      {"5, login", socksPassword(five), bytes({1, 3, 'j', 'o', 'e', 2, 'p', 'w'})},
      {"5, IPv4", socksRequest(connect, five, {"192.0.2.1", 0xFFFF}),
       bytes({5, 1, 0, 1, 192, 0, 2, 1, 255, 255})},
      {"5, name", socksRequest(connect, five, {"ab.c", 21}),
       bytes({5, 1, 0, 3, 4, 'a', 'b', '.', 'c', 0, 21})},
      {"5, IPv6", socksRequest(SocksCommand::bind, five, {"2001:db8::1", 21}),
       bytes({5, 2, 0, 4, 0x20, 1, 0xD, 0xB8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 21})},
  };
  for (const auto& c : cases) EXPECT_EQ(c.made, c.expected) << c.name;
}

TEST(SocksMessages, AreRefusedWhereTheyCannotBeMade) {
  const std::string longest(255, 'x'), tooLong(256, 'x');
  const auto connect = SocksCommand::connect;
  const auto four = [](const std::string& user) { return SocksLogin{SocksVersion::v4, user, ""}; };
  EXPECT_EQ(socksRequest(connect, {}, {longest, 21}).size(), 4U + 1 + 255 + 2);
  const int bad = number(FtpErrorNumber::badArgument);
  EXPECT_EQ(errorNumber([&] { socksRequest(connect, {}, {tooLong, 21}); }), bad);
  EXPECT_EQ(errorNumber([&] { socksRequest(connect, four(""), {tooLong, 21}); }), bad);
  EXPECT_EQ(errorNumber([&] { socksRequest(connect, four(tooLong), {"a", 21}); }), bad);
  EXPECT_EQ(errorNumber([&] { socksRequest(connect, four(std::string("a\0b", 3)), {"a", 21}); }), bad);
  EXPECT_EQ(errorNumber([&] { socksRequest(connect, four(""), {"2001:db8::1", 21}); }), bad);
  EXPECT_EQ(errorNumber([&] { socksPassword({SocksVersion::v5, tooLong, ""}); }), bad);
  EXPECT_EQ(errorNumber([&] { socksPassword({SocksVersion::v5, "joe", tooLong}); }), bad);
}

TEST(SocksMessages, AreReadToTheByte) {
  const struct {
    const char* name;
    SocksVersion version;
    std::string reply;
    const char* host;
    std::uint16_t port;
  } cases[] = {
      {"4", SocksVersion::v4, bytes({0, 0x5A, 0x12, 0x34, 192, 0, 2, 1}), "192.0.2.1", 0x1234},
      {"4, repeating the version", SocksVersion::v4, bytes({4, 0x5A, 0, 21, 0, 0, 0, 0}), "0.0.0.0", 21},
      {"5, IPv4", SocksVersion::v5, bytes({5, 0, 0, 1, 192, 0, 2, 1, 0xFF, 0xFE}), "192.0.2.1", 0xFFFE},
      {"5, name", SocksVersion::v5, bytes({5, 0, 0, 3, 2, 'a', 'b', 0, 21}), "ab", 21},
      {"5, empty name", SocksVersion::v5, bytes({5, 0, 0, 3, 0, 0, 21}), "", 21},
      {"5, IPv6", SocksVersion::v5,
       bytes({5, 0, 0, 4, 0x20, 1, 0xD, 0xB8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 21}), "2001:db8::1", 21},
  };
  for (const auto& c : cases) {
    // From every beginning of it the length is a bound that no later byte takes back.
    std::size_t bound = 0;
    for (std::size_t have = 0; have <= c.reply.size(); ++have) {
      const std::size_t length = socksReplyLength(c.version, c.reply.substr(0, have));
      EXPECT_GE(length, bound) << c.name;
      EXPECT_LE(length, c.reply.size()) << c.name;
      EXPECT_EQ(length == have, have == c.reply.size()) << c.name << " at " << have;
      bound = length;
    }
    const SocksAddress address = socksReplyAddress(c.version, c.reply);
    EXPECT_EQ(address.host, c.host) << c.name;
    EXPECT_EQ(address.port, c.port) << c.name;
  }
  for (const std::string& foreign :
       {bytes({'2'}), bytes({4}), bytes({0}), bytes({5, 0, 0, 2, 0}), bytes({5, 0, 0, 0, 0})}) {
    EXPECT_EQ(errorNumber([&] { socksReplyLength(SocksVersion::v5, foreign); }),
              number(FtpErrorNumber::badReply));
  }
  EXPECT_EQ(errorNumber([&] { socksReplyLength(SocksVersion::v4, "220 Ready."); }),
            number(FtpErrorNumber::badReply));
}

// --- sessions

class SocksSessionTest : public FtpClientTest {
 protected:
  SocksSessionTest() {
    client.proxyHost = "127.0.0.1";
    client.proxyPort = proxy.port();
    server.addFile("/f", "hello");
  }
  void loginBy(FtpProxyType type) {
    client.proxyType = static_cast<std::int32_t>(type);
    client.login("ftp.example.org", "joe", "hunter22", "", server.port());
  }

  ScriptedSocksServer proxy;
};

TEST_F(SocksSessionTest, LeadsEveryConnectionThroughTheProxy) {
  const struct {
    FtpProxyType type;
    int version;
    bool passive;
    const char* userName;
    int dataCommand;
    const char* asked;
  } cases[] = {
      {FtpProxyType::socks4, 4, true, "joe", 1, "EPSV"},  {FtpProxyType::socks4, 4, false, "", 2, "PORT"},
      {FtpProxyType::socks5, 5, true, "", 1, "EPSV"},     {FtpProxyType::socks5, 5, true, "joe", 1, "EPSV"},
      {FtpProxyType::socks5, 5, false, "joe", 2, "PORT"},
  };
  for (const auto& c : cases) {
    const std::size_t before = proxy.requests().size();
    const std::size_t askedBefore = server.count(c.asked);
    client.setPassive(c.passive);
    client.proxyUserName = c.userName;
    client.proxyPassword = "a=b/";
    loginBy(c.type);
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
      EXPECT_EQ(requests[i].host, "ftp.example.org") << "the proxy looks the name up";
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
      {kV5, "", {.greeting = bytes({5, 255})}, kRefused, "wants a login"},
      {kV5, "", {.greeting = bytes({5, 2})}, kRefused, "wants a login"},
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

TEST_F(SocksSessionTest, SurvivesAProxyThatAnswersByteByByte) {
  proxy.set({.pause = std::chrono::milliseconds(3)});
  client.setPassive(false);
  client.proxyUserName = "u";
  int pumped = 0;
  client.pump = [&] { ++pumped; };
  loginBy(FtpProxyType::socks5);
  EXPECT_GE(pumped, 2) << "14 bytes and 3 ms each";
  client.getFile("/f", (folder / "f").string());
  EXPECT_EQ(contentsOf(folder / "f"), "hello");
}

TEST_F(SocksSessionTest, CanBeAbortedAnywhere) {
  const Script silences[] = {{.greeting = "", .then = Then::staySilent},
                             {.login = "", .then = Then::staySilent},
                             {.reply = bytes({5, 0}), .then = Then::staySilent}};
  client.proxyUserName = "u";
  for (const Script& script : silences) {
    proxy.set(script);
    int pumped = 0;
    client.pump = [&] {
      if (++pumped == 5) client.abort();
    };
    const auto start = Clock::now();
    EXPECT_EQ(errorOf([&] { loginBy(FtpProxyType::socks5); }).number(), number(FtpErrorNumber::aborted));
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(5));
    EXPECT_EQ(client.state(), FtpState::closed);
  }
  for (const bool passive : {true, false}) {
    client.pump = nullptr;
    proxy.set({.reply = "", .then = Then::staySilent}, 1);
    client.setPassive(passive);
    loginBy(FtpProxyType::socks5);
    const std::size_t before = proxy.requests().size();
    client.pump = [&] {
      if (proxy.requests().size() > before) client.abort();
    };
    const auto start = Clock::now();
    EXPECT_EQ(errorOf([&] { client.list(); }).number(), number(FtpErrorNumber::aborted));
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(5));
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
       "lets no data connection come in (passive mode needs none): the proxy says"},
      {false,
       {.reply = bytes({5, 0, 0, 3, 1, 'a', 0, 21})},
       "come in through the proxy: the proxy does not tell where"},
      {false, {.reply = ""}, "come in through the proxy: the proxy closed the connection"},
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
