// Sessions of the FTP client, against a scripted server.
#include <future>
#include <thread>

#include "platform/ftp/FtpClientFixture.h"
#include "platform/ftp/FtpControl.h"

namespace quillmoor {
namespace {

using namespace testing;  // of this project
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

// --- login

TEST_F(FtpClientTest, LogsInAndOut) {
  login();
  EXPECT_EQ(client.state(), FtpState::connected);
  EXPECT_THROW(client.setPassive(false), FtpError) << "not within a session";
  client.logout();
  client.setPassive(false);
  EXPECT_FALSE(client.passive());
  EXPECT_THAT(states, ElementsAre(1, 2, 3, 0));
  EXPECT_THAT(server.commands(), ElementsAre("USER joe", "PASS hunter22", "FEAT", "OPTS UTF8 ON", "QUIT"));
  for (const auto& event : events) {
    EXPECT_TRUE(event.text.empty() || event.text.ends_with("\r\n")) << event.text;
  }
  EXPECT_THAT(shownTexts(), Not(HasSubstr("hunter22")));
}

TEST_F(FtpClientTest, LogsInTheWayTheServerAsks) {
  const char* const kUserPass = "USER joe, PASS hunter22";
  const struct {
    const char *name, *greeting, *user, *pass, *account, *sent;
    int error;
  } cases[] = {
      {"delayed greeting", "120 In a minute.\r\n220 Ready.", "331 ?", "230 In.", "", kUserPass, 0},
      {"no password wanted", "220 R", "230 In.", "", "", "USER joe", 0},
      {"password superfluous", "220 R", "331 ?", "202 Superfluous.", "", kUserPass, 0},
      {"account", "220 R", "331 ?", "332 ?", "acc", "USER joe, PASS hunter22, ACCT acc", 0},
      {"account after user", "220 R", "332 Account?", "", "acc", "USER joe, ACCT acc", 0},
      {"account wanted, none there", "220 R", "331 ?", "332 Account?", "", kUserPass, 332},
      {"closed for today", "421 Too many users.", "", "", "", "", 421},
      {"user refused", "220 R", "530 No joe.", "", "", "USER joe", 530},
      {"password refused", "220 R", "331 ?", "530 Not hunter22.", "", kUserPass, 530},
      {"no FTP server", "SSH-2.0-Server", "", "", "", "", number(badReply)},
  };
  for (const auto& c : cases) {
    ScriptedFtpServer other;
    other.on("", replies(c.greeting));
    other.on("USER", replies(c.user));
    other.on("PASS", replies(c.pass));
    other.on("ACCT", replies("230 In."));
    const FtpError error =
        errorOf([&] { client.login("127.0.0.1", "joe", "hunter22", c.account, other.port()); });
    EXPECT_EQ(error.number(), c.error) << c.name << ": " << error.what();
    EXPECT_EQ(client.state(), c.error == 0 ? FtpState::connected : FtpState::closed) << c.name;
    EXPECT_EQ(received(other), c.sent + std::string(c.error == 0 ? ", FEAT, OPTS UTF8 ON" : "")) << c.name;
    EXPECT_THAT(shownTexts(), Not(HasSubstr("hunter22"))) << c.name;
    client.abort();
  }
}

TEST_F(FtpClientTest, ProbesASilentConnectionEveryMinuteAndDelaysNoCommand) {
  const Pump pump;
  PumpedIo io(pump);
  FtpControl control(io);
  control.connect({{asio::ip::address_v4::loopback(), server.port()}}, "", std::chrono::seconds(10));
  const auto& socket = control.stream().channel().socket;
  asio::socket_base::keep_alive probes;
  socket.get_option(probes);
  EXPECT_TRUE(probes.value());
  asio::ip::tcp::no_delay unbuffered;
  socket.get_option(unbuffered);
  EXPECT_TRUE(unbuffered.value()) << "a short command is sent at once";
  if (!tellsProbes()) return;
  asio::detail::socket_option::integer<IPPROTO_TCP, kProbeAfter> after;
  asio::detail::socket_option::integer<IPPROTO_TCP, kProbeEvery> every;
  socket.get_option(after);
  socket.get_option(every);
  EXPECT_EQ(after.value(), 60);
  EXPECT_EQ(every.value(), 60);
}

TEST_F(FtpClientTest, ReportsARefusedConnection) {
  std::uint16_t closedPort = 0;
  { closedPort = ScriptedFtpServer().port(); }
  client.proxyHost = "127.0.0.1";
  client.proxyPort = closedPort;
  for (const char* words : {"Cannot connect to 127.0.0.1", "Cannot connect to the proxy 127.0.0.1"}) {
    const FtpError error = errorOf([&] { client.login("127.0.0.1", "joe", "x", "", closedPort); });
    EXPECT_EQ(error.number(), number(connectFailed));
    EXPECT_THAT(error.what(), HasSubstr(words));
    client.proxyType = static_cast<std::int32_t>(FtpProxyType::socks5);
  }
  EXPECT_THAT(states, ElementsAre(1, 0, 1, 0));
  EXPECT_EQ(errors.size(), 2U);
}

TEST_F(FtpClientTest, TakesAReplyThatCameWhileItsPumpOutlastedTheTimeout) {
  login();
  std::promise<void> replied;
  server.once("NOOP", [&](Session& s) {
    s.reply("200 Here.");
    replied.set_value();
  });
  client.timeoutMs = kShortMs;
  int fromPump = 0;
  client.pump = [&] {  // as a box that the user answers late
    if (fromPump != 0) return;
    fromPump = numberOf([&] { client.command("PWD"); });
    const auto late = Clock::now() + std::chrono::milliseconds(kShortMs);
    replied.get_future().wait();
    while (Clock::now() < late) std::this_thread::yield();
  };
  // So that it is due as soon as the command has been sent.
  for (const auto due = Clock::now() + std::chrono::milliseconds(30); Clock::now() < due;)
    std::this_thread::yield();
  EXPECT_NO_THROW(client.command("NOOP"));
  EXPECT_EQ(fromPump, number(busy)) << "one operation at a time";
}

TEST_F(FtpClientTest, RefusesAProxyOrPortThatCannotBeBeforeAnythingIsSent) {
  const struct {
    std::int32_t type;
    const char* host;
    std::int32_t port;
    const char* words;
  } cases[] = {{1, "", 1080, "host is missing"},    {3, "", 21, "host is missing"},
               {2, "proxy", 0, "not a valid port"}, {7, "proxy", 65536, "not a valid port"},
               {8, "proxy", 21, "type 8"},          {-1, "proxy", 21, "type -1"}};
  for (const auto& c : cases) {
    client.proxyType = c.type;
    client.proxyHost = c.host;
    client.proxyPort = c.port;
    const FtpError error = errorOf([&] { login(); });
    EXPECT_EQ(error.number(), number(badArgument));
    EXPECT_THAT(error.what(), HasSubstr(c.words));
  }
  client.proxyType = 0;
  for (const std::int32_t port : {0, 65536})
    EXPECT_EQ(numberOf([&] { client.login("127.0.0.1", "joe", "x", "", port); }), number(badArgument));
  EXPECT_THAT(states, ElementsAre());
}

// --- commands

TEST_F(FtpClientTest, RaisesRefusalsAndStaysConnected) {
  login();
  const FtpError error = errorOf([&] { client.setCurrentRemoteDirectory("/nowhere"); });
  EXPECT_EQ(error.number(), 550);
  EXPECT_THAT(error.what(), HasSubstr("There is no such folder"));
  EXPECT_EQ(events.back().status, FtpStatus::failed);
  EXPECT_EQ(events.back().text, "550 There is no such folder.\r\n");
  EXPECT_EQ(client.currentRemoteDirectory(), "/");
}

TEST_F(FtpClientTest, NeverSendsASecondCommandHiddenInAName) {
  login();
  const auto before = server.commands().size();
  for (const char* path : {"/a\r\nDELE /b", "/a\nDELE /b", "/a\r"}) {
    EXPECT_EQ(numberOf([&] { client.setCurrentRemoteDirectory(path); }), number(badArgument));
    EXPECT_EQ(numberOf([&] { fetched(path); }), number(badArgument));
  }
  EXPECT_EQ(numberOf([&] { client.command(std::string("TYPE\0I", 6)); }), number(badArgument));
  EXPECT_EQ(server.commands().size(), before);
  EXPECT_EQ(client.state(), FtpState::connected);
}

TEST_F(FtpClientTest, EndsASessionWhoseAnswersCannotBeTrusted) {
  const struct {
    const char* name;
    std::function<void(Session&)> action;
    int error;
  } cases[] = {
      {"dropped", drops(), number(connectionLost)},
      {"421", replies("421 Idle for too long."), 421},
      {"garbage", [](Session& s) { s.sendControl("12\x02 what\r\n"); }, number(badReply)},
      {"a code that is none", replies("999 What?"), number(badReply)},
      {"line of 1 MiB", [](Session& s) { s.sendControl("200 " + std::string(1 << 20, 'x')); },
       number(tooLong)},
      {"lines without end",
       [](Session& s) {
         s.reply("200-Start");
         while (s.isOpen()) s.reply("200-" + std::string(1000, 'x'));
       },
       number(tooLong)},
      {"a reply in drips",
       [](Session& s) {
         s.sendControl("200 slow");
         s.waitForClient();
       },
       number(timedOut)},
  };
  for (const auto& c : cases) {
    client.timeoutMs = 10'000;
    login();
    if (c.error == number(timedOut)) client.timeoutMs = kShortMs;
    server.once("NOOP", c.action);
    EXPECT_EQ(numberOf([&] { client.command("NOOP"); }), c.error) << c.name;
    EXPECT_EQ(client.state(), FtpState::closed) << c.name;
  }
}

TEST_F(FtpClientTest, IsNotHeldUpByAFloodOfReplies) {
  for (const char* reply : {"150 On my way.\r\n", "200 Stray.\r\n"}) {
    login();
    server.once("NOOP", [=](Session& s) {
      std::string flood = "200 Fine.\r\n";
      for (int i = 0; i < 10'000; ++i) flood += reply;
      s.sendControl(flood);
    });
    client.command("NOOP");
    EXPECT_EQ(numberOf([&] { client.currentRemoteDirectory(); }), number(badReply)) << reply;
    EXPECT_EQ(client.state(), FtpState::closed);
  }
}

TEST_F(FtpClientTest, KnowsTheTypeInForce) {
  login();
  EXPECT_TRUE(client.asciiType());
  client.command("TYPE I");
  EXPECT_FALSE(client.asciiType());
  server.once("TYPE A", replies("504 Never."));
  EXPECT_EQ(numberOf([&] { client.command("TYPE A"); }), 504);
  EXPECT_FALSE(client.asciiType());
  client.sendAhead({"TYPE A"}, false);
  client.currentRemoteDirectory();
  EXPECT_TRUE(client.asciiType()) << "the reply has been let pass";
  client.command("TYPE I");
  login();
  EXPECT_TRUE(client.asciiType());
}

TEST_F(FtpClientTest, PassesOverRepliesThatAnswerNothing) {
  login();
  server.once("NOOP", [](Session& s) { s.sendControl("200 Fine.\r\n226 A late one.\r\n"); });
  client.command("NOOP");
  EXPECT_EQ(client.currentRemoteDirectory(), "/");
  EXPECT_THAT(shownTexts(), HasSubstr("226 A late one."));

  server.once("NOOP", [](Session& s) { s.sendControl("200 Fine.\r\n421 Closing.\r\n"); });
  client.command("NOOP");
  EXPECT_EQ(numberOf([&] { client.command("NOOP"); }), 421);
  EXPECT_EQ(client.state(), FtpState::closed);

  login();
  server.once("PWD", replies("250 Directory changed."));
  EXPECT_EQ(numberOf([&] { client.currentRemoteDirectory(); }), number(badReply));
  EXPECT_EQ(client.state(), FtpState::closed) << "no reply but 257 names the folder";
}

// --- commands sent ahead

TEST_F(FtpClientTest, SendingAheadChangesNothingButTime) {
  const std::vector<std::vector<std::string>> announcements = {
      {},           {"TYPE A", "CWD /www", "PWD"}, {"NOOP", "TYPE A"},
      {"CWD /www"}, {"PWD", "PWD", "PWD", "PWD"},  {"CWD /none"}};
  server.addFile("/www/a.txt", "hello");
  for (const auto& lines : announcements) {
    for (const bool dataConnection : {false, true}) {
      login();
      client.sendAhead(lines, dataConnection);
      client.command("TYPE A");
      client.setCurrentRemoteDirectory("/www");
      EXPECT_EQ(client.currentRemoteDirectory(), "/www");
      EXPECT_THAT(client.list().text, HasSubstr("a.txt"));
      EXPECT_EQ(numberOf([&] { client.setCurrentRemoteDirectory("/none"); }), 550);
      EXPECT_EQ(fetched("/www/a.txt"), "hello");
      client.logout();
    }
  }
  EXPECT_GT(server.commandsSentAhead(), 0U);
}

TEST_F(FtpClientTest, FallsBackWhenAServerLosesWhatIsSentAhead) {
  server.addFile("/www/a.txt", "hello");
  server.discardInputBehindCommands();
  client.timeoutMs = kEnoughMs;
  for (const char* const marker : {"215 UNIX", "500 What?", "502 Not here."}) {
    server.on("SYST", replies(marker));
    login();
    client.sendAhead({"TYPE A", "CWD /www", "PWD"}, true);
    client.command("TYPE A");
    client.setCurrentRemoteDirectory("/www");
    EXPECT_EQ(client.currentRemoteDirectory(), "/www");
    EXPECT_THAT(client.list().text, HasSubstr("a.txt"));
    const auto sent = server.commandsSentAhead();
    client.sendAhead({"TYPE I"}, true);
    client.command("TYPE I");
    EXPECT_EQ(server.commandsSentAhead(), sent) << "once bitten, nothing is sent ahead any more";
    EXPECT_EQ(client.state(), FtpState::connected) << marker;
  }
}

TEST_F(FtpClientTest, TakesNoLateReplyForTheMarkers) {
  server.discardInputBehindCommands();
  server.once("TYPE", [](Session& s) {
    s.waitForClient();  // until it asks how many were heard
    s.reply("200 Late.");
  });
  server.once("SYST", staysSilent());
  login();
  client.timeoutMs = kShortMs;
  client.sendAhead({"TYPE A", "PWD"}, false);
  EXPECT_EQ(numberOf([&] { client.command("TYPE A"); }), number(timedOut));
  EXPECT_EQ(client.state(), FtpState::closed) << "its next reply would be taken for another command's";
}

TEST_F(FtpClientTest, AnAbortEndsALoginAndBetweenOperationsTheSession) {
  login();
  client.abort();
  EXPECT_EQ(client.state(), FtpState::closed);
  EXPECT_THAT(states, ElementsAre(1, 2, 3, 0));
  EXPECT_EQ(numberOf([&] { client.command("NOOP"); }), number(notConnected));

  server.on("", staysSilent());
  client.pump = [&] { client.abort(); };
  EXPECT_EQ(numberOf([&] { login(); }), number(aborted));
  EXPECT_EQ(client.state(), FtpState::closed);
}

}  // namespace
}  // namespace quillmoor
