// Logins through proxies that speak FTP; a scripted server plays the proxy.
#include "platform/ftp/FtpClientFixture.h"

namespace quillmoor {
namespace {

using namespace testing;  // of this project
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
using enum FtpProxyType;

class ProxyLoginTest : public FtpClientTest {
 protected:
  void loginBy(FtpProxyType type, std::int32_t port = 21, const std::string& host = "ftp.example.org",
               const std::string& account = "") {
    client.proxyType = static_cast<std::int32_t>(type);
    client.proxyHost = "127.0.0.1";
    client.login(host, "joe", "hunter22", account, port);
  }
};

TEST_F(ProxyLoginTest, SendsWhatTheStyleAsksForAndNamesWhoMayRefuse) {
  const char* const kHost = "ftp.example.org";
  const struct {
    FtpProxyType type;
    const char *proxyUser, *host;
    std::int32_t port;
    const char* sent;
  } cases[] = {
      {siteHostname, "gate", kHost, 21, "USER gate, PASS opensesame, SITE ftp.example.org, USER joe"},
      {siteHostname, "gate", kHost, 2121, "USER gate, PASS opensesame, SITE ftp.example.org 2121, USER joe"},
      {siteHostname, "", kHost, 21, "SITE ftp.example.org, USER joe"},
      {userLogon, "gate", kHost, 21, "USER gate, PASS opensesame, USER joe@ftp.example.org"},
      {userLogon, "gate", kHost, 2121, "USER gate, PASS opensesame, USER joe@ftp.example.org:2121"},
      // The editor has no user name for this type; one left over from another type must not be used.
      {userNoLogon, "gate", kHost, 21, "USER joe@ftp.example.org"},
      {userNoLogon, "", "2001:db8::1", 2121, "USER joe@[2001:db8::1]:2121"},
      {open, "gate", "192.0.2.1", 21, "USER gate, PASS opensesame, OPEN 192.0.2.1, USER joe"},
      {open, "", kHost, 990, "OPEN ftp.example.org 990, USER joe"},
      {pipe, "gate", kHost, 2121, "USER joe"},
  };
  for (const auto& c : cases) {
    ScriptedFtpServer proxy;
    for (const char* command : {"SITE", "OPEN"}) proxy.on(command, replies("200 Connected."));
    proxy.addFile("/f", "hello");
    client.proxyPort = proxy.port();
    client.proxyUserName = c.proxyUser;
    client.proxyPassword = "opensesame";
    loginBy(c.type, c.port, c.host);
    client.sendAhead({"TYPE I"}, true);
    client.command("TYPE I");
    EXPECT_EQ(fetched(), "hello") << c.sent << ": data connections lead to the proxy";
    const std::string who = c.type == pipe ? "The server" : "The server, or the proxy before it,";
    EXPECT_EQ(errorOf([&] { client.setCurrentRemoteDirectory("/gone"); }).what(),
              who + " refused CWD: 550 There is no such folder.");
    client.logout();
    EXPECT_EQ(proxy.commandsSentAhead(), 0U) << c.sent << ": a proxy may answer out of turn";
    EXPECT_THAT(received(proxy), StartsWith(c.sent + std::string(", PASS hunter22, FEAT")));
  }
  EXPECT_THAT(shownTexts(), Not(HasSubstr("hunter22")));
  EXPECT_THAT(shownTexts(), Not(HasSubstr("opensesame")));
}

TEST_F(ProxyLoginTest, TakesTheAnswersOfProxiesAndSaysWhoRefused) {
  const struct {
    const char* name;
    FtpProxyType type;
    const char* command;  // whose answer is replaced
    std::function<void(Session&)> action;
    int error;          // 0: the login succeeds
    const char* words;  // of the error, or a command that must have been sent
    const char* account = "";
  } cases[] = {
      {"no password at the proxy", siteHostname, "USER gate", replies("230 In."), 0, "PASS hunter22"},
      {"account at the proxy", userLogon, "PASS opensesame", replies("332 ?"), 0, "PASS hunter22", "acc"},
      {"the answer is the server's greeting", siteHostname, "SITE", replies("220 Hi."), 0, "PASS hunter22"},
      {"greeting after the answer", open, "OPEN", replies("200 Wait.\r\n220-Hi\r\n220 Hi."), 0,
       "PASS hunter22"},
      {"delayed greeting", open, "OPEN", replies("150 .\r\n120 .\r\n220 Ready."), 0, "PASS hunter22"},
      {"greeting as the user name goes", siteHostname, "USER joe", replies("220 Ready.\r\n331 Password?"), 0,
       "PASS hunter22"},
      {"a banner inside the answer", userNoLogon, "USER joe@",
       replies("331-(connected)\r\n331-(220 Ready.)\r\n331 Password?"), 0, "PASS hunter22"},
      {"greeting", siteHostname, "", replies("421 Too many."), 421, "the proxy says 421 Too many."},
      {"password", open, "PASS opensesame", replies("530 Not opensesame."), 530,
       "The proxy refused the password: the proxy says 530 Not ****."},
      {"account", siteHostname, "PASS opensesame", replies("332 ?"), 332,
       "The proxy asks for an account (ACCT)"},
      {"SITE unknown", siteHostname, "SITE", replies("500 What?"), 500,
       "did not connect to ftp.example.org (SITE): the proxy says 500 What?"},
      {"OPEN fails and closes", open, "OPEN", replies("421 No route."), 421, "the proxy says 421 No route."},
      {"USER at host", userNoLogon, "USER joe@", replies("550 No host."), 550, "the proxy says 550 No host."},
      {"silent", userLogon, "USER gate", staysSilent(), number(timedOut), "The proxy did not answer in time"},
      {"dropped", siteHostname, "SITE", drops(), number(connectionLost), "The proxy closed the connection"},
      {"no FTP", userNoLogon, "", replies("HTTP/1.1 400"), number(badReply),
       "The proxy sent something that is not an FTP reply"},
      {"lost after OPEN", open, "USER joe", replies("425 No route after all."), 425,
       "The server, or the proxy before it, refused the user name: 425 No route after all."},
      {"connects at the password", userNoLogon, "PASS", replies("550 No such host."), 550,
       "The server, or the proxy before it, refused the password: 550 No such host."},
      // From here on it is the server that speaks.
      {"server's password", userNoLogon, "PASS", replies("530 Wrong."), 530,
       "The server refused the password: 530 Wrong."},
      {"server's syntax", userNoLogon, "PASS", replies("501 Empty."), 501,
       "The server refused the password: 501 Empty."},
      {"server's order", userNoLogon, "PASS", replies("503 Logged in."), 503,
       "The server refused the password: 503 Logged in."},
      {"server closed", userLogon, "PASS hunter22", replies("421 Full."), 421,
       "The server closed the session"},
      {"pipe", pipe, "", replies("421 Full."), 421, "The server refused the connection: 421 Full."},
      // Greetings without end must not hold a login up.
      {"greetings only", siteHostname, "USER joe", replies("220 .\r\n220 .\r\n220 .\r\n220 ."), 220,
       "did not answer the user name"},
  };
  client.proxyUserName = "gate";
  client.proxyPassword = "opensesame";
  for (const auto& c : cases) {
    ScriptedFtpServer proxy;
    for (const char* command : {"SITE", "OPEN"}) proxy.on(command, replies("200 Connected."));
    proxy.on("ACCT", replies("230 In."));
    proxy.once(c.command, c.action);
    client.proxyPort = proxy.port();
    client.timeoutMs = c.error == number(timedOut) ? kShortMs : 10'000;
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

}  // namespace
}  // namespace quillmoor
