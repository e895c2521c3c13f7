// Logins through proxies that speak FTP: a server takes the proxy's part, as a test tells it to.
#include "platform/ftp/FtpClientFixture.h"

namespace quillmoor {
namespace {

using namespace testing;  // of this project
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class ProxyLoginTest : public FtpClientTest {
 protected:
  void loginBy(FtpProxyType type, std::int32_t port = 21, const std::string& host = "ftp.example.org",
               const std::string& account = "") {
    client.proxyType = static_cast<std::int32_t>(type);
    client.proxyHost = "127.0.0.1";
    client.login(host, "joe", "hunter22", account, port);
  }
};

TEST_F(ProxyLoginTest, SendsWhatTheStyleAsksFor) {
  const char* const kHost = "ftp.example.org";
  const struct {
    FtpProxyType type;
    const char* proxyUser;
    const char* host;
    std::int32_t port;
    const char* sent;
  } cases[] = {
      {FtpProxyType::siteHostname, "gate", kHost, 21,
       "USER gate, PASS opensesame, SITE ftp.example.org, USER joe"},
      {FtpProxyType::siteHostname, "gate", kHost, 2121,
       "USER gate, PASS opensesame, SITE ftp.example.org 2121, USER joe"},
      {FtpProxyType::siteHostname, "", kHost, 21, "SITE ftp.example.org, USER joe"},
      {FtpProxyType::userLogon, "gate", kHost, 21, "USER gate, PASS opensesame, USER joe@ftp.example.org"},
      {FtpProxyType::userLogon, "gate", kHost, 2121,
       "USER gate, PASS opensesame, USER joe@ftp.example.org:2121"},
      // The editor has no user name for this type; one that is left from another type must not be used.
      {FtpProxyType::userNoLogon, "gate", kHost, 21, "USER joe@ftp.example.org"},
      {FtpProxyType::userNoLogon, "", "2001:db8::1", 2121, "USER joe@[2001:db8::1]:2121"},
      {FtpProxyType::open, "gate", "192.0.2.1", 21, "USER gate, PASS opensesame, OPEN 192.0.2.1, USER joe"},
      {FtpProxyType::open, "", kHost, 990, "OPEN ftp.example.org 990, USER joe"},
      {FtpProxyType::pipe, "gate", kHost, 2121, "USER joe"},
  };
  for (const auto& c : cases) {
    ScriptedFtpServer proxy;
    proxy.on("SITE", replies("200 Connected."));
    proxy.on("OPEN", replies("200 Connected."));
    proxy.addFile("/f", "hello");
    client.proxyPort = proxy.port();
    client.proxyUserName = c.proxyUser;
    client.proxyPassword = "opensesame";
    loginBy(c.type, c.port, c.host);
    client.sendAhead({"TYPE I"}, true);
    client.command("TYPE I");
    client.getFile("/f", (folder / "f").string());
    EXPECT_EQ(contentsOf(folder / "f"), "hello") << c.sent << ": data connections lead to the proxy";
    client.logout();
    EXPECT_EQ(proxy.commandsSentAhead(), 0U) << c.sent << ": a proxy may answer out of turn";
    EXPECT_THAT(received(proxy), StartsWith(c.sent + std::string(", PASS hunter22, FEAT")));
  }
  EXPECT_THAT(shownTexts(), Not(HasSubstr("hunter22")));
  EXPECT_THAT(shownTexts(), Not(HasSubstr("opensesame")));
}

TEST_F(ProxyLoginTest, TakesTheAnswersThatProxiesGiveAndTellsWhoRefused) {
  const struct {
    const char* name;
    FtpProxyType type;
    const char* command;  // whose answer is replaced
    std::function<void(Session&)> action;
    int error;          // 0: the login succeeds
    const char* words;  // of the error; what is sent after all where there is none
    const char* account = "";
  } cases[] = {
      {"no password at the proxy", FtpProxyType::siteHostname, "USER gate", replies("230 In."), 0,
       "PASS hunter22"},
      {"account at the proxy", FtpProxyType::userLogon, "PASS opensesame", replies("332 Account?"), 0,
       "PASS hunter22", "acc"},
      {"account at the server", FtpProxyType::userLogon, "PASS hunter22", replies("332 Account?"), 0,
       "ACCT acc", "acc"},
      {"the server's greeting is the answer", FtpProxyType::siteHostname, "SITE",
       replies("220 Server ready."), 0, "PASS hunter22"},
      {"the server's greeting comes behind", FtpProxyType::open, "OPEN",
       replies("200 Connecting.\r\n220-Server\r\n220 ready."), 0, "PASS hunter22"},
      {"a delayed greeting", FtpProxyType::open, "OPEN",
       replies("150 Wait.\r\n120 In a minute.\r\n220 Ready."), 0, "PASS hunter22"},
      {"the greeting comes as the user name goes", FtpProxyType::siteHostname, "USER joe",
       replies("220 Ready.\r\n331 Password?"), 0, "PASS hunter22"},
      {"a banner inside the answer", FtpProxyType::userNoLogon, "USER joe@",
       replies("331-(connected)\r\n331-(220 Ready.)\r\n331 Password?"), 0, "PASS hunter22"},
      {"no password at the server", FtpProxyType::userNoLogon, "USER joe@", replies("230 In."), 0, "FEAT"},
      {"greeting", FtpProxyType::siteHostname, "", replies("421 Too many."), 421,
       "the proxy says 421 Too many."},
      {"password", FtpProxyType::open, "PASS opensesame", replies("530 Not opensesame."), 530,
       "The proxy refused the password: the proxy says 530 Not ****."},
      {"account", FtpProxyType::siteHostname, "PASS opensesame", replies("332 Account?"), 332,
       "The proxy asks for an account (ACCT)"},
      {"SITE unknown", FtpProxyType::siteHostname, "SITE", replies("500 What?"), 500,
       "did not connect to ftp.example.org (SITE): the proxy says 500 What?"},
      {"OPEN fails and closes", FtpProxyType::open, "OPEN", replies("421 No route."), 421,
       "the proxy says 421 No route."},
      {"USER at host", FtpProxyType::userNoLogon, "USER joe@", replies("550 No such host."), 550,
       "the proxy says 550 No such host."},
      {"silent", FtpProxyType::userLogon, "USER gate", staysSilent(), number(FtpErrorNumber::timedOut),
       "The proxy did not answer in time"},
      {"dropped", FtpProxyType::siteHostname, "SITE", drops(), number(FtpErrorNumber::connectionLost),
       "The proxy closed the connection"},
      {"no FTP", FtpProxyType::userNoLogon, "", replies("HTTP/1.1 400 Bad Request"),
       number(FtpErrorNumber::badReply), "The proxy sent something that is not an FTP reply"},
      {"lost behind OPEN", FtpProxyType::open, "USER joe", replies("425 No route after all."), 425,
       "The server, or the proxy before it, refused the user name: 425 No route after all."},
      {"connects at the password", FtpProxyType::userNoLogon, "PASS", replies("550 No such host."), 550,
       "The server, or the proxy before it, refused the password: 550 No such host."},
      // From here on it is the server that speaks.
      {"server's password", FtpProxyType::userNoLogon, "PASS", replies("530 Wrong."), 530,
       "The server refused the password: 530 Wrong."},
      {"server closed", FtpProxyType::userLogon, "PASS hunter22", replies("421 Full."), 421,
       "The server closed the session: 421 Full."},
      {"pipe", FtpProxyType::pipe, "", replies("421 Full."), 421,
       "The server refused the connection: 421 Full."},
      // Greetings without end are no way to hold a login up.
      {"greetings only", FtpProxyType::siteHostname, "USER joe",
       [](Session& s) {
         for (int i = 0; i < 1000; ++i) s.reply("220 Ready.");
       },
       220, "did not answer the user name"},
  };
  client.proxyUserName = "gate";
  client.proxyPassword = "opensesame";
  for (const auto& c : cases) {
    ScriptedFtpServer proxy;
    proxy.on("SITE", replies("200 Connected."));
    proxy.on("OPEN", replies("200 Connected."));
    proxy.on("ACCT", replies("230 In."));
    proxy.once(c.command, c.action);
    client.proxyPort = proxy.port();
    client.timeoutMs = c.error == number(FtpErrorNumber::timedOut) ? kShortMs : 10'000;
    const FtpError error = errorOf([&] { loginBy(c.type, 21, "ftp.example.org", c.account); });
    EXPECT_EQ(error.number(), c.error) << c.name << ": " << error.what();
    EXPECT_EQ(client.state(), c.error == 0 ? FtpState::connected : FtpState::closed) << c.name;
    EXPECT_THAT(shownTexts(), Not(HasSubstr("opensesame"))) << c.name;
    if (c.error != 0) {
      EXPECT_THAT(error.what(), HasSubstr(c.words)) << c.name;
      continue;
    }
    EXPECT_EQ(proxy.count(c.words), 1U) << c.name;
    EXPECT_EQ(client.currentRemoteDirectory(), "/") << c.name;
    client.abort();
  }
}

TEST_F(ProxyLoginTest, NamesBothWhereEitherMayHaveRefused) {
  for (const auto type : {FtpProxyType::siteHostname, FtpProxyType::userLogon, FtpProxyType::userNoLogon,
                          FtpProxyType::open, FtpProxyType::pipe}) {
    ScriptedFtpServer proxy;
    proxy.on("SITE", replies("200 Connected."));
    proxy.on("OPEN", replies("200 Connected."));
    proxy.on("PORT", replies("500 Not from here."));
    client.proxyPort = proxy.port();
    client.setPassive(false);
    loginBy(type);
    const std::string who = type == FtpProxyType::pipe ? "The server" : "The server, or the proxy before it,";
    EXPECT_EQ(errorOf([&] { client.setCurrentRemoteDirectory("/gone"); }).what(),
              who + " refused CWD: 550 There is no such folder.");
    EXPECT_EQ(errorOf([&] { client.list(); }).what(), who + " refused PORT: 500 Not from here.");
    client.logout();
  }
}

TEST_F(ProxyLoginTest, NeverSendsASecondCommandHiddenInAHost) {
  client.proxyPort = server.port();
  for (const auto type : {FtpProxyType::siteHostname, FtpProxyType::userNoLogon, FtpProxyType::open}) {
    EXPECT_EQ(errorOf([&] { loginBy(type, 21, "a\r\nDELE b"); }).number(),
              number(FtpErrorNumber::badArgument));
  }
  EXPECT_EQ(server.count("DELE"), 0U);
}

}  // namespace
}  // namespace quillmoor
