// Listings and files: data connections of the FTP client, and what goes wrong on them.
#include <optional>
#include <string>

#include "platform/ftp/FtpClientFixture.h"
#include "platform/ftp/NvtText.h"
#include "platform/net/PumpedIo.h"

namespace quillmoor {
namespace {

using namespace testing;  // of this project
using ::testing::HasSubstr;

using FtpTransferTest = FtpClientTest;

// --- listings

TEST_F(FtpTransferTest, AsksForHiddenFilesUntilTheServerShowsThatItDoesNotUnderstand) {
  const struct {
    const char* name;
    ScriptedFtpServer::Action firstTime;
    bool missing;
    std::size_t asked, without;
  } cases[] = {
      {"understood", [](Session& s) { s.answerAsUsual(); }, false, 2, 0},
      {"refused", refusesData("550 -a: No such file or directory."), false, 1, 2},
      {"lists nothing", transfers("150 Here.", "", "226 Listed."), false, 1, 2},
      {"an empty folder", refusesData("450 No files found."), false, 1, 2},
      {"cut", refusesData("426 Cut."), true, 2, 1},
      {"busy", refusesData("450 Busy."), true, 2, 1},
  };
  for (const auto& c : cases) {
    ScriptedFtpServer other;
    other.addFile("/.htaccess", "x");
    other.once("LIST -a", c.firstTime);
    client.login("127.0.0.1", "joe", "x", "", other.port());
    for (const bool missing : {c.missing, false}) {
      const FtpListing listing = client.list();
      EXPECT_THAT(listing.text, HasSubstr(".htaccess")) << c.name;
      EXPECT_EQ(listing.hiddenFilesMissing, missing) << c.name;
    }
    EXPECT_EQ(other.count("LIST -a"), c.asked) << c.name;
    EXPECT_EQ(other.count("LIST"), c.asked + c.without) << c.name;
  }
}

TEST_F(FtpTransferTest, RecognisesAnEmptyFolderAndACutListing) {
  login();
  server.on("LIST", refusesData("550 No files found."));
  EXPECT_EQ(client.list().text, "");
  server.on("LIST", refusesData("550 Permission denied: no files visible."));
  EXPECT_EQ(numberOf([&] { client.list(); }), 550);
  EXPECT_EQ(client.state(), FtpState::connected);
  server.on("LIST",
            transfers("150 Here.", "a\r\n", "226-Options: -a -l\r\n226 Output truncated to\x1b 1 matches"));
  const FtpListing listing = client.list();
  EXPECT_EQ(listing.text, "a\r\n");
  EXPECT_EQ(listing.cut, "Output truncated to? 1 matches");
}

TEST_F(FtpTransferTest, EndsAListingThatIsTooLong) {
  login();
  client.maxListingBytes = 1 << 20;
  server.on("LIST", transfers("150 Here.", std::string(4 << 20, 'x'), "426 Closed."));
  EXPECT_EQ(numberOf([&] { client.list(); }), number(tooLong));
  EXPECT_EQ(client.currentRemoteDirectory(), "/") << "the session goes on";
}

TEST_F(FtpTransferTest, TurnsAwayAnotherMachineThanTheServerAndSaysSo) {
  asio::io_context context;
  asio::ip::tcp::socket unexpected(context);
  std::uint16_t port = 0;
  server.on("PORT", [&](Session& s) {
    unsigned high = 0, low = 0;
    EXPECT_EQ(std::sscanf(s.argument.c_str(), "127,0,0,1,%u,%u", &high, &low), 2) << s.argument;
    port = static_cast<std::uint16_t>(high * 256 + low);
    s.answerAsUsual();
  });
  server.on("LIST", [&](Session& s) {
    unexpected.open(asio::ip::tcp::v4());
    unexpected.bind({asio::ip::make_address("127.0.0.2"), 0});
    unexpected.connect({asio::ip::address_v4::loopback(), port});
    s.waitForClient();
  });
  client.setPassive(false);
  login();
  client.timeoutMs = kEnoughMs;
  const FtpError error = errorOf([&] { client.list(); });
  EXPECT_EQ(error.number(), number(timedOut));
  EXPECT_THAT(error.what(), HasSubstr("A connection from another machine, 127.0.0.2, was rejected."));
}

// --- files

TEST_F(FtpTransferTest, FetchesFilesEveryWayADataConnectionCanBeOpened) {
  const std::string bytes = std::string("binary \r\n\n\r\0 ", 13) + std::string(700'000, '\xFE');
  const std::string closedPort = "229 Come in (|||" + std::to_string(ScriptedFtpServer().port()) + "|)";
  const struct {
    const char* name;
    bool passive, ipv6;
    std::string epsv;  // the answer to EPSV, in place of the right one
    const char* command;
  } cases[] = {
      {"EPSV", true, false, "", "EPSV"},
      {"EPSV refused", true, false, "500 What?", "PASV"},
      {"EPSV without a port", true, false, "229 Entering.", "PASV"},
      {"EPSV to a closed port", true, false, closedPort, "PASV"},
      {"active", false, false, "", "PORT"},
      {"EPSV, IPv6", true, true, "", "EPSV"},
      {"active, IPv6", false, true, "", "EPRT"},
  };
  for (const auto& c : cases) {
    ScriptedFtpServer other(c.ipv6);
    if (!c.epsv.empty()) other.on("EPSV", replies(c.epsv));
    other.addFile("/f", bytes);
    client.setPassive(c.passive);
    client.login(c.ipv6 ? "::1" : "127.0.0.1", "joe", "x", "", other.port());
    client.command("TYPE I");
    EXPECT_TRUE(fetched() == bytes) << c.name;
    EXPECT_EQ(other.count(c.command), 1U) << c.name;
    const auto extended = other.count("EPSV");
    fetched();
    if (!c.epsv.empty()) {
      EXPECT_EQ(other.count("EPSV"), extended) << c.name << ": not remembered";
    }
    client.logout();
  }
}

TEST_F(FtpTransferTest, ConvertsTextAndNothingElse) {
  const char* const kSent = "a\r\nb\r\nc\r\r\nd\r";
  login();
  server.on("RETR", transfers("150 Here.", kSent, "226 Sent."));
  client.command("TYPE A");
  EXPECT_EQ(fetched(), platformLineEnd() == LineEnd::lf ? "a\nb\nc\r\nd\r" : kSent);
  client.command("TYPE I");
  EXPECT_EQ(fetched(), kSent);
}

TEST_F(FtpTransferTest, ShowsTheProgressOfAFileAndPumpsInItsMidst) {
  constexpr std::size_t kSize = std::size_t{48} << 20;
  server.addFile("/big", std::string(kSize, 'x'));
  login();
  client.command("TYPE I");
  // Twice the promise, for a machine that is busy with other tests; a busy disk may hold up one transfer.
  constexpr std::chrono::milliseconds kLongest(200);
  Clock::duration worst = kLongest;
  auto last = Clock::now();
  client.pump = [&] {
    const auto now = Clock::now();
    worst = std::max(worst, now - std::exchange(last, now));
  };
  for (int tries = 0; tries < 3 && worst >= kLongest; ++tries) {
    events.clear();
    worst = Clock::duration::zero();
    last = Clock::now();
    client.getFile("/big", (folder / "big").string());
    EXPECT_EQ(std::filesystem::file_size(folder / "big"), kSize);
  }
  EXPECT_LT(worst, kLongest);
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

TEST_F(FtpTransferTest, LeavesTheOldFileWhenTheNewOneCannotBeFetchedWhole) {
  const char* const kBegin = "150 Here it comes (1000 bytes).";
  const auto half = [](const char* preliminary, const ScriptedFtpServer::Action& then) {
    return [=](Session& s) {
      s.openData();
      s.reply(preliminary);
      s.sendData("half");
      then(s);
    };
  };
  const auto reset = [](Session& s) {
    s.resetData();
    s.reply("226 Sent.");
  };
  const auto noReply = [](Session& s) {
    s.closeData();
    s.waitForClient();
  };
  const struct {
    const char* name;
    std::function<void(Session&)> action;
    int error;
    bool sessionSurvives;
    std::int32_t timeoutMs = 10'000;
  } cases[] = {
      {"550", refusesData("550 Gone."), 550, true},
      {"426 in the middle", transfers(kBegin, "half", "426 Broken off."), 426, true},
      {"data connection reset, and 226", half("150 Here.", reset), number(incomplete), true},
      {"silent data connection", half(kBegin, staysSilent()), number(timedOut), true, kEnoughMs},
      {"no confirmation", half("150 Here.", noReply), number(connectionLost), false, kEnoughMs},
      {"control connection dropped", transfers(kBegin, "half", ""), number(connectionLost), false},
      {"421 in the middle", transfers(kBegin, "half", "421 Going down."), 421, false},
  };
  writeFile(folder / "f", "the old file");
  for (const auto& c : cases) {
    if (c.error == number(incomplete) && !tellsResetFromEnd()) continue;
    client.timeoutMs = 10'000;
    if (client.state() == FtpState::closed) login();
    client.command("TYPE I");
    client.timeoutMs = c.timeoutMs;
    server.once("RETR", c.action);
    const auto start = Clock::now();
    EXPECT_EQ(numberOf([&] { fetched(); }), c.error) << c.name;
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(8)) << c.name;
    EXPECT_EQ(client.state() == FtpState::connected, c.sessionSurvives) << c.name;
    EXPECT_EQ(contentsOf(folder / "f"), "the old file") << c.name;
    EXPECT_EQ(filesIn(folder.path()), 1U) << c.name << ": something is left behind";
    client.timeoutMs = 10'000;
    if (c.sessionSurvives) {
      EXPECT_EQ(client.currentRemoteDirectory(), "/") << c.name;
    }
  }
}

TEST_F(FtpTransferTest, TakesAFileThatIsThereToTheLastByte) {
  const auto repliesEarly = [](Session& s) {
    s.openData();
    s.reply("150 Here it comes.");
    s.reply("226 Sent, so to speak.");
    s.sendData("he");
    s.sendData("llo");
    s.closeData();
  };
  const std::pair<const char*, std::function<void(Session&)>> cases[] = {
      {"226 before the data", repliesEarly},
      {"no preliminary reply", transfers("", "hello", "250 Done.")},
      {"size that lies downwards", transfers("150 Here it comes (2 bytes).", "hello", "226 Sent.")},
      {"connection lost after the last byte", transfers("150 Here it comes (5 bytes).", "hello", "")},
  };
  for (const auto& [name, action] : cases) {
    if (client.state() == FtpState::closed) login();
    client.command("TYPE I");
    server.once("RETR", action);
    EXPECT_EQ(fetched(), "hello") << name;
    std::filesystem::remove(folder / "f");
  }
}

TEST_F(FtpTransferTest, AsksAboutAFileThatIsNotAsLongAsListed) {
  const char* const kSize = "SIZE /f";
  const char* const kInBoth = "SIZE /f, TYPE I, SIZE /f, TYPE A";
  const char* const kLies = "150 Sending x (9 bytes).txt.";
  const struct {
    const char *name, *type;
    std::optional<std::int64_t> listed;
    const char* preliminary;     // of the 5 bytes that come
    const char *ascii, *binary;  // the answers to SIZE, in either type
    const char *asked, *words;   // the words of the error, if any
  } cases[] = {
      {"as listed", "TYPE I", 5, "150 Here.", "", "", "", ""},
      {"not known, nor told", "TYPE I", {}, "150 Here.", "", "500 What?", kSize, ""},
      {"not known, cut off", "TYPE I", {}, "150 Here.", "", "213 9", kSize, "the server now reports 9."},
      {"not known, but announced", "TYPE I", {}, "150 Here (5 bytes).", "", "", "", ""},
      {"cut off", "TYPE I", 9, "150 Here.", "", "213 9", kSize,
       "5 bytes were received, but the server lists 9 and now reports 9."},
      {"has shrunk since", "TYPE I", 9, "150 Here.", "", "213 5", kSize, ""},
      {"has grown from nothing", "TYPE I", 0, "150 Here (5 bytes).", "", "213 5", kSize, ""},
      {"goes on growing", "TYPE I", 4, "150 Here.", "", "213 6", kSize, "reports 6."},
      {"SIZE unknown", "TYPE I", 9, "150 Here (5 bytes).", "", "500 What?", kSize, "reports no size."},
      {"no number", "TYPE I", 9, "150 Here.", "", "213 5,000", kSize, "reports no size."},
      {"announced longer", "TYPE I", {}, "150 (9 bytes)", "", "213 9", kSize, "announces 9 and now reports"},
      {"a name like a size", "TYPE I", 5, kLies, "", "213 5", kSize, ""},
      {"text, longer", "TYPE A", 3, kLies, "", "", "", ""},
      {"text, shrunk since", "TYPE A", 9, "150 Here.", "213 5", "", kSize, ""},
      {"text, cut off", "TYPE A", 9, "150 Here.", "213 10", "", kSize, "reports 10."},
      {"text, shrunk, told in binary", "TYPE A", 9, "150 Here.", "550 No.", "213 4", kInBoth, ""},
      {"text, cut off, told in binary", "TYPE A", 9, "150 Here.", "550 No.", "213 6", kInBoth, "reports 6."},
      {"text, not told", "TYPE A", 9, "150 Here.", "500 No.", "500 No.", kInBoth, "reports no size."},
  };
  login();
  bool ascii = true;
  server.on("TYPE", [&](Session& s) {
    ascii = s.argument == "A";
    s.answerAsUsual();
  });
  for (const auto& c : cases) {
    server.once("RETR", transfers(c.preliminary, "hello", "226 Sent."));
    server.on("SIZE", [&](Session& s) { s.reply(ascii ? c.ascii : c.binary); });
    writeFile(folder / "f", "the old file");
    client.sendAhead({c.type}, true);
    client.command(c.type);
    const FtpError error = errorOf([&] { fetched("/f", c.listed); });
    const std::string sent = received(server);
    EXPECT_EQ(error.number(), *c.words ? number(incomplete) : 0) << c.name << ": " << error.what();
    EXPECT_THAT(error.what(), HasSubstr(c.words)) << c.name;
    EXPECT_EQ(contentsOf(folder / "f"), *c.words ? "the old file" : "hello") << c.name;
    EXPECT_EQ(sent.substr(sent.rfind("RETR")), std::string("RETR /f") + (*c.asked ? ", " : "") + c.asked)
        << c.name;
    EXPECT_EQ(client.currentRemoteDirectory(), "/") << c.name;
    EXPECT_TRUE(client.asciiType() == ascii && ascii == (c.type == std::string("TYPE A"))) << c.name;
  }
}

TEST_F(FtpTransferTest, ClosesASessionWhereAskingForTheSizeFails) {
  server.on("RETR", transfers("150 Here.", "hello", "226 Sent."));
  server.on("SIZE", replies("213 5"));
  const struct {
    const char* command;
    std::function<void(Session&)> action;
    int error;
  } cases[] = {{"SIZE", drops(), number(connectionLost)},
               {"SIZE", replies("421 Bye."), 421},
               {"SIZE", staysSilent(), number(timedOut)},
               // The file is there, but in which type would the next be?
               {"TYPE A", replies("500 Not any more."), 0}};
  for (const auto& c : cases) {
    writeFile(folder / "f", "the old file");
    login();
    server.once(c.command, c.action);
    if (c.error == 0) server.once("SIZE", replies("550 Not in ASCII."));
    client.timeoutMs = c.error == number(timedOut) ? kEnoughMs : 10'000;
    EXPECT_EQ(numberOf([&] { fetched("/f", 9); }), c.error);
    EXPECT_EQ(client.state(), FtpState::closed) << c.error;
    EXPECT_EQ(contentsOf(folder / "f"), c.error ? "the old file" : "hello");
  }
}

TEST_F(FtpTransferTest, FindsOutHowTheServerTakesAByte255) {
  for (const bool undoubles : {false, true}) {
    for (const bool ahead : {false, true}) {
      ScriptedFtpServer other;
      other.addFile("/d\xFF/f\xFF\xFF", "hello");
      for (const char* verb : {"CWD", "RETR"}) {
        if (!undoubles) break;
        other.on(verb, [](Session& s) {
          for (auto at = s.argument.find("\xFF\xFF"); at != std::string::npos;
               at = s.argument.find("\xFF\xFF", at + 1))
            s.argument.erase(at, 1);
          s.answerAsUsual();
        });
      }
      client.login("127.0.0.1", "joe", "x", "", other.port());
      EXPECT_EQ(numberOf([&] { client.setCurrentRemoteDirectory("/none\xFF"); }), 550);
      EXPECT_EQ(other.count("CWD"), 2U) << "either form may be the right one";
      errors.clear();
      if (ahead) client.sendAhead({"CWD /d\xFF", "PWD"}, true);
      client.setCurrentRemoteDirectory("/d\xFF");
      EXPECT_EQ(client.currentRemoteDirectory(), "/d\xFF");
      EXPECT_EQ(fetched("f\xFF\xFF"), "hello");
      EXPECT_EQ(fetched("/d\xFF/f\xFF\xFF"), "hello");
      client.setCurrentRemoteDirectory("/d\xFF");
      EXPECT_EQ(other.count("CWD /d"), undoubles ? 2U : 3U) << "found out once";
      EXPECT_EQ(other.count("RETR"), 2U);
      client.login("127.0.0.1", "joe", "x", "", other.port());
      EXPECT_EQ(fetched("/d\xFF/f\xFF\xFF"), "hello") << "by a file's name too";
      EXPECT_EQ(other.count("RETR"), undoubles ? 3U : 4U);
      EXPECT_TRUE(errors.empty()) << errors[0];
    }
  }
}

TEST_F(FtpTransferTest, AnAbortEndsATransferWithoutAHangOrAHalfFile) {
  writeFile(folder / "f", "the old file");
  for (const bool answers : {true, false}) {
    login();
    if (!answers) server.on("SYST", staysSilent());
    server.once("RETR", [=](Session& s) {
      s.openData();
      s.reply("150 Here it comes.");
      s.sendData("some");
      s.waitForClient();
      s.closeData();
      if (answers) s.reply("426 Broken off.");
    });
    const std::size_t before = server.count("RETR");
    client.pump = [&] {
      if (server.count("RETR") > before) client.abort();
    };
    const auto start = Clock::now();
    EXPECT_EQ(numberOf([&] { fetched(); }), number(aborted));
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(8));
    client.pump = nullptr;
    EXPECT_EQ(client.state(), answers ? FtpState::connected : FtpState::closed);
    EXPECT_EQ(contentsOf(folder / "f"), "the old file");
    EXPECT_EQ(filesIn(folder.path()), 1U);
  }
  EXPECT_EQ(server.count("ABOR"), 2U);
}

TEST_F(FtpTransferTest, AFileThatCannotBeWrittenHarmsNothingElse) {
  server.addFile("/f", "x");
  login();
  const FtpError error = errorOf([&] { client.getFile("/f", (folder / "no such folder" / "f").string()); });
  EXPECT_EQ(error.number(), number(localFile));
  EXPECT_THAT(error.what(), HasSubstr("no such folder"));
  EXPECT_EQ(server.count("RETR"), 0U);
  EXPECT_EQ(fetched(), "x");
}

}  // namespace
}  // namespace quillmoor
