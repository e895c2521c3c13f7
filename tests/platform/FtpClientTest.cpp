// The FTP client against a server that does what a test tells it to.
#include "platform/FtpClient.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "support/ScriptedFtpServer.h"
#include "support/TemporaryFolder.h"

namespace quillmoor {
namespace {

using testing::contentsOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using testing::ScriptedFtpServer;
using testing::TemporaryFolder;
using testing::writeFile;
using Clock = std::chrono::steady_clock;
using Session = ScriptedFtpServer::Session;

constexpr std::int32_t kShortMs = 300;  // for what is to time out
constexpr int kOwn = 1000;              // numbers above it are the client's own

int number(FtpErrorNumber n) {
  return static_cast<int>(n);
}

class FtpClientTest : public ::testing::Test {
 protected:
  FtpClientTest() {
    client.timeoutMs = 10'000;
    client.onError = [this](int, const std::string& text) { errors.push_back(text); };
    client.onState = [this](FtpState state) { states.push_back(static_cast<int>(state)); };
    client.onProgress = [this](const FtpProgress& event) { events.push_back(event); };
  }

  void login() { client.login("127.0.0.1", "joe", "hunter22", "", server.port()); }

  /// The error an operation raises; its number is 0 when it raises none.
  FtpError errorOf(const std::function<void()>& operation) {
    try {
      operation();
    } catch (const FtpError& error) {
      return error;
    }
    return {0, ""};
  }

  std::string shownTexts() const {
    std::string all;
    for (const auto& event : events) all += event.text;
    for (const auto& error : errors) all += error;
    return all;
  }

  std::size_t filesIn(const std::filesystem::path& path) const {
    return static_cast<std::size_t>(
        std::distance(std::filesystem::directory_iterator(path), std::filesystem::directory_iterator()));
  }

  ScriptedFtpServer server;
  FtpClient client;
  TemporaryFolder folder;
  std::vector<std::string> errors;
  std::vector<int> states;
  std::vector<FtpProgress> events;
};

// --- login
// --------------------------------------------------------------------------------------------------

TEST_F(FtpClientTest, LogsInAndOut) {
  login();
  EXPECT_EQ(client.state(), FtpState::connected);
  client.logout();
  EXPECT_THAT(states, ElementsAre(1, 2, 3, 0));
  EXPECT_THAT(server.commands(), ElementsAre("USER joe", "PASS hunter22", "FEAT", "OPTS UTF8 ON", "QUIT"));
  for (const auto& event : events) {
    EXPECT_TRUE(event.text.empty() || event.text.ends_with("\r\n")) << event.text;
  }
  EXPECT_THAT(shownTexts(), Not(HasSubstr("hunter22")));
}

TEST_F(FtpClientTest, LogsInTheWayTheServerAsks) {
  const struct {
    const char* name;
    const char* greeting;
    const char* user;
    const char* pass;
    const char* account;
    std::vector<std::string> sent;
    int error;
  } cases[] = {
      {"delayed greeting",
       "120 In a minute.\r\n220 Ready.",
       "331 ?",
       "230 In.",
       "",
       {"USER joe", "PASS hunter22"},
       0},
      {"long greeting",
       "220-Hi\r\n 220 not yet\r\n220 Ready.",
       "331 ?",
       "230 In.",
       "",
       {"USER joe", "PASS hunter22"},
       0},
      {"no password wanted", "220 Ready.", "230 In.", "", "", {"USER joe"}, 0},
      {"password superfluous",
       "220 Ready.",
       "331 ?",
       "202 Superfluous.",
       "",
       {"USER joe", "PASS hunter22"},
       0},
      {"account after password",
       "220 R",
       "331 ?",
       "332 Account?",
       "acc",
       {"USER joe", "PASS hunter22", "ACCT acc"},
       0},
      {"account after user", "220 R", "332 Account?", "", "acc", {"USER joe", "ACCT acc"}, 0},
      {"account wanted, none there",
       "220 R",
       "331 ?",
       "332 Account?",
       "",
       {"USER joe", "PASS hunter22"},
       332},
      {"account not wanted", "220 R", "331 ?", "230 In.", "acc", {"USER joe", "PASS hunter22"}, 0},
      {"closed for today", "421 Too many users.", "", "", "", {}, 421},
      {"user refused", "220 R", "530 No joe.", "", "", {"USER joe"}, 530},
      {"password refused", "220 R", "331 ?", "530 Not hunter22.", "", {"USER joe", "PASS hunter22"}, 530},
      {"no FTP server", "SSH-2.0-Server", "", "", "", {}, number(FtpErrorNumber::badReply)},
  };
  for (const auto& c : cases) {
    ScriptedFtpServer other;
    other.on("", [&](Session& s) { s.reply(c.greeting); });
    other.on("USER", [&](Session& s) { s.reply(c.user); });
    other.on("PASS", [&](Session& s) { s.reply(c.pass); });
    other.on("ACCT", [&](Session& s) { s.reply("230 In."); });
    const FtpError error =
        errorOf([&] { client.login("127.0.0.1", "joe", "hunter22", c.account, other.port()); });
    EXPECT_EQ(error.number(), c.error) << c.name << ": " << error.what();
    EXPECT_EQ(client.state(), c.error == 0 ? FtpState::connected : FtpState::closed) << c.name;
    auto sent = other.commands();
    sent.resize(std::min(sent.size(), c.sent.size()));
    EXPECT_EQ(sent, c.sent) << c.name;
    EXPECT_THAT(shownTexts(), Not(HasSubstr("hunter22"))) << c.name;
    client.abort();
  }
}

TEST_F(FtpClientTest, TellsARefusedConnection) {
  std::uint16_t closedPort = 0;
  { closedPort = ScriptedFtpServer().port(); }
  const FtpError error = errorOf([&] { client.login("127.0.0.1", "joe", "x", "", closedPort); });
  EXPECT_EQ(error.number(), number(FtpErrorNumber::connectFailed));
  EXPECT_THAT(error.what(), HasSubstr("127.0.0.1"));
  EXPECT_THAT(states, ElementsAre(1, 0));
  EXPECT_EQ(errors.size(), 1U);
}

TEST_F(FtpClientTest, GivesUpOnAHostThatSaysNothingAndPumpsMeanwhile) {
  server.on("", [](Session& s) { s.waitForClient(); });
  client.timeoutMs = kShortMs;
  int pumped = 0;
  client.pump = [&] { ++pumped; };
  const auto start = Clock::now();
  EXPECT_EQ(errorOf([&] { login(); }).number(), number(FtpErrorNumber::timedOut));
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(5));
  EXPECT_GE(pumped, kShortMs / 20);
  EXPECT_EQ(client.state(), FtpState::closed);
}

TEST_F(FtpClientTest, ALoginCanBeAborted) {
  server.on("", [](Session& s) { s.waitForClient(); });
  client.pump = [&] { client.abort(); };
  EXPECT_EQ(errorOf([&] { login(); }).number(), number(FtpErrorNumber::aborted));
  EXPECT_EQ(client.state(), FtpState::closed);
}

TEST_F(FtpClientTest, SaysThatAProxyIsNotSupportedBeforeAnythingIsSent) {
  for (std::int32_t type = 1; type <= 7; ++type) {
    client.proxyType = type;
    EXPECT_EQ(errorOf([&] { login(); }).number(), number(FtpErrorNumber::proxyNotSupported));
  }
  EXPECT_THAT(states, ElementsAre());
  EXPECT_THAT(server.commands(), ElementsAre());
}

TEST_F(FtpClientTest, KeepsThePassiveModeOfASession) {
  login();
  EXPECT_THROW(client.setPassive(false), FtpError);
  client.logout();
  client.setPassive(false);
  EXPECT_FALSE(client.passive());
}

TEST_F(FtpClientTest, TakesOneOperationAtATime) {
  login();
  int busyError = 0;
  server.once("NOOP", [&](Session& s) {
    s.waitForClient();
    s.reply("200 Late.");
  });
  client.timeoutMs = kShortMs;
  client.pump = [&] {
    if (busyError == 0) busyError = errorOf([&] { client.command("PWD"); }).number();
  };
  EXPECT_EQ(errorOf([&] { client.command("NOOP"); }).number(), number(FtpErrorNumber::timedOut));
  EXPECT_EQ(busyError, number(FtpErrorNumber::busy));
  EXPECT_EQ(errorOf([&] { client.command("NOOP"); }).number(), number(FtpErrorNumber::notConnected));
}

// --- commands
// -----------------------------------------------------------------------------------------------

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
    EXPECT_EQ(errorOf([&] { client.setCurrentRemoteDirectory(path); }).number(),
              number(FtpErrorNumber::badArgument));
    EXPECT_EQ(errorOf([&] { client.getFile(path, (folder / "x").string()); }).number(),
              number(FtpErrorNumber::badArgument));
  }
  EXPECT_EQ(errorOf([&] { client.command(std::string("TYPE\0I", 6)); }).number(),
            number(FtpErrorNumber::badArgument));
  EXPECT_EQ(server.commands().size(), before);
  EXPECT_EQ(client.state(), FtpState::connected);
}

TEST_F(FtpClientTest, EndsASessionWhoseAnswersCannotBeTrusted) {
  const struct {
    const char* name;
    std::function<void(Session&)> action;
    int error;
  } cases[] = {
      {"dropped", [](Session& s) { s.drop(); }, number(FtpErrorNumber::connectionLost)},
      {"421", [](Session& s) { s.reply("421 Idle for too long."); }, 421},
      {"garbage", [](Session& s) { s.sendControl("\x01\x02 what\r\n"); }, number(FtpErrorNumber::badReply)},
      {"line of 1 MiB", [](Session& s) { s.sendControl("200 " + std::string(1 << 20, 'x')); },
       number(FtpErrorNumber::tooLong)},
      {"reply without end",
       [](Session& s) {
         s.sendControl("200-begin\r\n");
         for (int i = 0; i < 100'000; ++i) s.sendControl("200-and on\r\n");
       },
       number(FtpErrorNumber::tooLong)},
      {"silence", [](Session& s) { s.waitForClient(); }, number(FtpErrorNumber::timedOut)},
      {"a reply in drips",
       [](Session& s) {
         s.sendControl("200 slow");
         s.waitForClient();
       },
       number(FtpErrorNumber::timedOut)},
  };
  for (const auto& c : cases) {
    client.timeoutMs = 10'000;
    login();
    client.timeoutMs = kShortMs;
    server.once("NOOP", c.action);
    EXPECT_EQ(errorOf([&] { client.command("NOOP"); }).number(), c.error) << c.name;
    EXPECT_EQ(client.state(), FtpState::closed) << c.name;
  }
}

TEST_F(FtpClientTest, PassesOverRepliesThatAnswerNothing) {
  login();
  server.once("NOOP", [](Session& s) { s.sendControl("200 Fine.\r\n226 A late one.\r\n"); });
  client.command("NOOP");
  EXPECT_EQ(client.currentRemoteDirectory(), "/");
  EXPECT_THAT(shownTexts(), HasSubstr("226 A late one."));

  server.once("NOOP", [](Session& s) { s.sendControl("200 Fine.\r\n421 Closing.\r\n"); });
  client.command("NOOP");
  EXPECT_EQ(errorOf([&] { client.command("NOOP"); }).number(), 421);
  EXPECT_EQ(client.state(), FtpState::closed);
}

// --- commands sent ahead
// ------------------------------------------------------------------------------------

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
      EXPECT_THAT(client.list(), HasSubstr("a.txt"));
      EXPECT_EQ(errorOf([&] { client.setCurrentRemoteDirectory("/none"); }).number(), 550);
      client.getFile("/www/a.txt", (folder / "a").string());
      EXPECT_EQ(contentsOf(folder / "a"), "hello");
      client.logout();
    }
  }
  EXPECT_GT(server.commandsSentAhead(), 0U);
}

TEST_F(FtpClientTest, FallsBackWhenAServerLosesWhatIsSentAhead) {
  server.addFile("/www/a.txt", "hello");
  server.discardInputBehindCommands();
  client.timeoutMs = kShortMs;
  login();
  client.sendAhead({"TYPE A", "CWD /www", "PWD"}, true);
  client.command("TYPE A");
  client.setCurrentRemoteDirectory("/www");
  EXPECT_EQ(client.currentRemoteDirectory(), "/www");
  EXPECT_THAT(client.list(), HasSubstr("a.txt"));
  const auto sent = server.commandsSentAhead();
  client.sendAhead({"TYPE I"}, true);
  client.command("TYPE I");
  EXPECT_EQ(server.commandsSentAhead(), sent) << "once bitten, nothing is sent ahead any more";
  EXPECT_EQ(client.state(), FtpState::connected);
}

// --- listings
// -----------------------------------------------------------------------------------------------

TEST_F(FtpClientTest, AsksForHiddenFilesWhereTheServerUnderstands) {
  using Switch = ScriptedFtpServer::HiddenSwitch;
  const struct {
    Switch hidden;
    std::size_t listsFirst, listsSecond;
  } cases[] = {{Switch::understood, 1, 1}, {Switch::refused, 2, 1}, {Switch::listsNothing, 2, 1}};
  for (const auto& c : cases) {
    ScriptedFtpServer other;
    other.hiddenSwitch = c.hidden;
    other.addFile("/.htaccess", "x");
    client.login("127.0.0.1", "joe", "x", "", other.port());
    EXPECT_THAT(client.list(), HasSubstr(".htaccess"));
    EXPECT_EQ(other.count("LIST"), c.listsFirst);
    EXPECT_THAT(client.list(), HasSubstr(".htaccess"));
    EXPECT_EQ(other.count("LIST"), c.listsFirst + c.listsSecond) << "the answer was not remembered";
    client.logout();
  }
}

TEST_F(FtpClientTest, TakesARefusalToListNothingForAnEmptyFolder) {
  login();
  server.on("LIST", [](Session& s) {
    s.closeDataPort();
    s.reply("550 No files found.");
  });
  EXPECT_EQ(client.list(), "");
  server.on("LIST", [](Session& s) {
    s.closeDataPort();
    s.reply("550 Permission denied.");
  });
  EXPECT_EQ(errorOf([&] { client.list(); }).number(), 550);
  EXPECT_EQ(client.state(), FtpState::connected);
}

TEST_F(FtpClientTest, EndsAListingThatNeverEnds) {
  login();
  client.maxListingBytes = 1 << 20;
  server.on("LIST", [](Session& s) {
    s.openData();
    s.reply("150 Here.");
    while (s.sendData("-rw-r--r-- 1 a b 1 Jan 1 2020 again\r\n")) {
    }
    s.closeData();
    s.reply("426 Closed.");
  });
  EXPECT_EQ(errorOf([&] { client.list(); }).number(), number(FtpErrorNumber::tooLong));
  EXPECT_EQ(client.currentRemoteDirectory(), "/") << "the session goes on";
}

// --- files
// --------------------------------------------------------------------------------------------------

TEST_F(FtpClientTest, FetchesFilesEveryWayADataConnectionCanBeOpened) {
  const std::string bytes = std::string("binary \r\n\n\r\0 ", 13) + std::string(700'000, '\xFE');
  const struct {
    const char* name;
    bool passive, ipv6;
    std::function<void(ScriptedFtpServer&)> prepare;
    const char* command;
  } cases[] = {
      {"EPSV", true, false, [](ScriptedFtpServer&) {}, "EPSV"},
      {"EPSV refused", true, false, [](auto& s) { s.on("EPSV", [](Session& x) { x.reply("500 What?"); }); },
       "PASV"},
      {"EPSV without a port", true, false,
       [](auto& s) { s.on("EPSV", [](Session& x) { x.reply("229 Entering."); }); }, "PASV"},
      {"EPSV to a closed port", true, false,
       [](auto& s) {
         s.on("EPSV", [](Session& x) {
           x.answerAsUsual();
           x.closeDataPort();
         });
       },
       "PASV"},
      {"active", false, false, [](ScriptedFtpServer&) {}, "PORT"},
      {"EPSV, IPv6", true, true, [](ScriptedFtpServer&) {}, "EPSV"},
      {"active, IPv6", false, true, [](ScriptedFtpServer&) {}, "EPRT"},
  };
  for (const auto& c : cases) {
    std::optional<ScriptedFtpServer> other;
    try {
      other.emplace(c.ipv6);
    } catch (const std::runtime_error&) {
      ASSERT_TRUE(c.ipv6);
      continue;  // this machine has no IPv6
    }
    c.prepare(*other);
    other->addFile("/f", bytes);
    client.setPassive(c.passive);
    client.login(c.ipv6 ? "::1" : "127.0.0.1", "joe", "x", "", other->port());
    client.command("TYPE I");
    client.getFile("/f", (folder / "f").string());
    EXPECT_TRUE(contentsOf(folder / "f") == bytes) << c.name;
    EXPECT_EQ(other->count(c.command), 1U) << c.name;
    const auto extended = other->count("EPSV");
    client.getFile("/f", (folder / "f").string());
    if (std::string(c.command) == "PASV") {
      EXPECT_EQ(other->count("EPSV"), extended) << c.name << ": not remembered";
    }
    client.logout();
  }
}

TEST_F(FtpClientTest, ConnectsToNoOtherMachineThanTheServer) {
  login();
  server.addFile("/f", "the server's own");
  server.on("EPSV", [](Session& s) { s.reply("502 No."); });
  server.on("PASV", [](Session& s) {
    // The port is right, the address another machine's.
    s.line = "PASV";
    s.answerAsUsual();
  });
  client.command("TYPE I");
  client.getFile("/f", (folder / "f").string());
  EXPECT_EQ(contentsOf(folder / "f"), "the server's own");
}

TEST_F(FtpClientTest, UsesTheRangeOfDataPorts) {
  client.setPassive(false);
  login();
  server.addFile("/f", "x");
  client.dataPortRange = "49200:49299";
  client.getFile("/f", (folder / "f").string());
  const std::string port = server.commands()[server.commands().size() - 2];
  unsigned high = 0, low = 0;
  ASSERT_EQ(std::sscanf(port.c_str(), "PORT 127,0,0,1,%u,%u", &high, &low), 2) << port;
  EXPECT_GE(high * 256 + low, 49200U);
  EXPECT_LE(high * 256 + low, 49299U);
  for (const char* bad : {"", "5", "9:8", "0:5", "1:70000", "1:2x"}) {
    client.dataPortRange = bad;
    EXPECT_EQ(errorOf([&] { client.getFile("/f", (folder / "g").string()); }).number(),
              number(FtpErrorNumber::badArgument))
        << bad;
  }
}

TEST_F(FtpClientTest, ConvertsTextAndNothingElse) {
  login();
  server.addFile("/f", "one\ntwo\r\nthree\rfour");
  client.command("TYPE A");
  client.getFile("/f", (folder / "a").string());
  EXPECT_EQ(contentsOf(folder / "a"), "one\ntwo\r\nthree\rfour");
  server.on("RETR", [](Session& s) {
    s.openData();
    s.reply("150 Here.");
    for (const char* chunk : {"a\r", "\nb\r\n", "c\r", "\r\n", "d\r"}) s.sendData(chunk);
    s.closeData();
    s.reply("226 Sent.");
  });
  client.getFile("/f", (folder / "a").string());
  EXPECT_EQ(contentsOf(folder / "a"), "a\nb\nc\r\nd\r");
  client.command("TYPE I");
  client.getFile("/f", (folder / "i").string());
  EXPECT_EQ(contentsOf(folder / "i"), "a\r\nb\r\nc\r\r\nd\r");
}

TEST_F(FtpClientTest, ShowsTheProgressOfAFileAndPumpsInItsMidst) {
  constexpr std::size_t kSize = std::size_t{48} << 20;
  server.addFile("/big", std::string(kSize, 'x'));
  login();
  client.command("TYPE I");
  events.clear();
  auto last = Clock::now();
  auto worst = Clock::duration::zero();
  client.pump = [&] {
    const auto now = Clock::now();
    worst = std::max(worst, now - std::exchange(last, now));
  };
  last = Clock::now();
  client.getFile("/big", (folder / "big").string());
  EXPECT_EQ(std::filesystem::file_size(folder / "big"), kSize);
  // Twice the promise, for a machine that is busy with other tests.
  EXPECT_LT(worst, std::chrono::milliseconds(200));
  std::int64_t before = 0;
  for (const auto& event : events) {
    EXPECT_EQ(event.method, FtpMethod::getFile);
    EXPECT_GE(event.count, before);
    EXPECT_EQ(event.size, static_cast<std::int64_t>(kSize));
    before = event.count;
  }
  EXPECT_EQ(before, static_cast<std::int64_t>(kSize));
  EXPECT_EQ(events.back().status, FtpStatus::done);
}

TEST_F(FtpClientTest, LeavesTheOldFileWhenTheNewOneCannotBeFetchedWhole) {
  const auto begin = [](Session& s) {
    s.openData();
    s.reply("150 Here it comes (1000 bytes).");
  };
  const struct {
    const char* name;
    std::function<void(Session&)> action;
    int error;
    bool sessionSurvives;
  } cases[] = {
      {"550",
       [](Session& s) {
         s.closeDataPort();
         s.reply("550 Gone.");
       },
       550, true},
      {"426 in the middle",
       [=](Session& s) {
         begin(s);
         s.sendData("half");
         s.closeData();
         s.reply("426 Broken off.");
       },
       426, true},
      {"fewer bytes than announced, and 226",
       [=](Session& s) {
         begin(s);
         s.sendData("half");
         s.closeData();
         s.reply("226 Sent.");
       },
       number(FtpErrorNumber::incomplete), true},
      {"data connection reset, and 226",
       [](Session& s) {
         s.openData();
         s.reply("150 Here it comes.");
         s.sendData("half");
         s.resetData();
         s.reply("226 Sent.");
       },
       number(FtpErrorNumber::incomplete), true},
      {"silent data connection",
       [=](Session& s) {
         begin(s);
         s.sendData("half");
         s.waitForClient();
         s.closeData();
         s.reply("426 Broken off.");
       },
       number(FtpErrorNumber::timedOut), true},
      {"silent for good",
       [=](Session& s) {
         begin(s);
         s.waitForClient();
       },
       number(FtpErrorNumber::timedOut), true},
      {"no confirmation",
       [](Session& s) {
         s.openData();
         s.reply("150 Here it comes.");
         s.sendData("whole?");
         s.closeData();
         s.waitForClient();
       },
       number(FtpErrorNumber::connectionLost), false},
      {"control connection dropped in the middle",
       [=](Session& s) {
         begin(s);
         s.sendData("half");
         s.drop();
       },
       number(FtpErrorNumber::connectionLost), false},
      {"421 in the middle",
       [=](Session& s) {
         begin(s);
         s.sendData("half");
         s.closeData();
         s.reply("421 Going down.");
       },
       421, false},
  };
  writeFile(folder / "f", "the old file");
  for (const auto& c : cases) {
    client.timeoutMs = 10'000;
    if (client.state() == FtpState::closed) login();
    client.command("TYPE I");
    client.timeoutMs = kShortMs;
    server.once("RETR", c.action);
    const auto start = Clock::now();
    const FtpError error = errorOf([&] { client.getFile("/f", (folder / "f").string()); });
    EXPECT_EQ(error.number(), c.error) << c.name << ": " << error.what();
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(8)) << c.name;
    EXPECT_EQ(client.state() == FtpState::connected, c.sessionSurvives) << c.name;
    EXPECT_EQ(contentsOf(folder / "f"), "the old file") << c.name;
    EXPECT_EQ(filesIn(folder.path()), 1U) << c.name << ": something is left behind";
    if (c.sessionSurvives) {
      EXPECT_EQ(client.currentRemoteDirectory(), "/") << c.name;
    }
  }
}

TEST_F(FtpClientTest, TakesAFileThatIsThereToTheLastByte) {
  const auto announced = [](Session& s) {
    s.openData();
    s.reply("150 Here it comes (5 bytes).");
  };
  const struct {
    const char* name;
    std::function<void(Session&)> action;
  } cases[] = {
      {"226 before the data",
       [=](Session& s) {
         announced(s);
         s.reply("226 Sent, so to speak.");
         s.sendData("he");
         s.sendData("llo");
         s.closeData();
       }},
      {"no preliminary reply",
       [](Session& s) {
         s.openData();
         s.sendData("hello");
         s.closeData();
         s.reply("250 Done.");
       }},
      {"size that lies downwards",
       [](Session& s) {
         s.openData();
         s.reply("150 Here it comes (2 bytes).");
         s.sendData("hello");
         s.closeData();
         s.reply("226 Sent.");
       }},
      {"connection lost behind the last byte",
       [=](Session& s) {
         announced(s);
         s.sendData("hello");
         s.closeData();
         s.drop();
       }},
  };
  for (const auto& c : cases) {
    if (client.state() == FtpState::closed) login();
    client.command("TYPE I");
    server.once("RETR", c.action);
    EXPECT_EQ(errorOf([&] { client.getFile("/f", (folder / "f").string()); }).number(), 0) << c.name;
    EXPECT_EQ(contentsOf(folder / "f"), "hello") << c.name;
    std::filesystem::remove(folder / "f");
  }
}

TEST_F(FtpClientTest, TellsADataConnectionThatTheServerNeverOpens) {
  client.setPassive(false);
  login();
  client.timeoutMs = kShortMs;
  server.once("RETR", [](Session& s) {
    s.reply("150 Any minute now.");
    s.waitForClient();
    s.reply("425 Could not.");
  });
  EXPECT_EQ(errorOf([&] { client.getFile("/f", (folder / "f").string()); }).number(),
            number(FtpErrorNumber::timedOut));
  EXPECT_EQ(filesIn(folder.path()), 0U);
  server.once("RETR", [](Session& s) { s.reply("425 Will not."); });
  EXPECT_EQ(errorOf([&] { client.getFile("/f", (folder / "f").string()); }).number(), 425);
}

TEST_F(FtpClientTest, AnAbortEndsATransferWithoutAHangOrAHalfFile) {
  server.addFile("/big", std::string(64 << 20, 'x'));
  writeFile(folder / "f", "the old file");
  for (const bool answers : {true, false}) {
    if (client.state() == FtpState::closed) login();
    client.command("TYPE I");
    if (!answers) server.on("ABOR", [](Session& s) { s.waitForClient(); });
    const auto start = Clock::now();
    server.once("RETR", [&](Session& s) {
      s.openData();
      s.reply("150 Here it comes.");
      s.sendData("some");
      s.waitForClient();
      s.closeData();
      if (answers) s.reply("426 Broken off.");
    });
    client.pump = [&] { client.abort(); };
    EXPECT_EQ(errorOf([&] { client.getFile("/big", (folder / "f").string()); }).number(),
              number(FtpErrorNumber::aborted));
    client.pump = nullptr;
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(8));
    EXPECT_EQ(client.state(), answers ? FtpState::connected : FtpState::closed);
    EXPECT_EQ(contentsOf(folder / "f"), "the old file");
    EXPECT_EQ(filesIn(folder.path()), 1U);
  }
  EXPECT_EQ(server.count("ABOR"), 2U);
}

TEST_F(FtpClientTest, AFileThatCannotBeWrittenHarmsNothingElse) {
  server.addFile("/f", "x");
  login();
  const FtpError error = errorOf([&] { client.getFile("/f", (folder / "no such folder" / "f").string()); });
  EXPECT_EQ(error.number(), number(FtpErrorNumber::localFile));
  EXPECT_THAT(error.what(), HasSubstr("no such folder"));
  EXPECT_EQ(server.count("RETR"), 0U);
  client.getFile("/f", (folder / "f").string());
  EXPECT_EQ(contentsOf(folder / "f"), "x");
}

TEST_F(FtpClientTest, AnAbortBetweenOperationsClosesTheSession) {
  login();
  client.abort();
  EXPECT_EQ(client.state(), FtpState::closed);
  EXPECT_THAT(states, ElementsAre(1, 2, 3, 0));
  EXPECT_GT(errorOf([&] { client.command("NOOP"); }).number(), kOwn);
}

}  // namespace
}  // namespace quillmoor
