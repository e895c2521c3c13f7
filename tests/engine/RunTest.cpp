// Whole backup runs against a server in memory.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "engine/BackupRunning.h"
#include "engine/RunWorld.h"
#include "platform/ftp/NvtText.h"
#include "profiles/mIni.h"
#include "support/ScriptedSocksServer.h"

namespace quillmoor {
namespace {

using namespace testing;  // of this project
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using Session = testing::ScriptedFtpServer::Session;
namespace fs = std::filesystem;

LocalDateTime at(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
  return *MakeLocalDateTime({year, month, day, hour, minute, second, 0});
}

class RunTest : public ::testing::Test, protected RunWorld {};

TEST_F(RunTest, MirrorsAFolderAndAllBelowIt) {
  server.addFile("/index.html", "one\ntwo\n");
  server.addFile("/www/a b.bin", std::string("\r\n\0\n", 4));
  server.addFile("/www/deep/x.txt", "x\n");
  server.addFolder("/www/empty");
  server.addLine("/www", "lrwxrwxrwx 1 o g 8 Jan  1  2020 link -> deep/x.t");
  const auto results = run();

  ASSERT_EQ(results.size(), 1U);
  EXPECT_TRUE(results[0].completed);
  EXPECT_THAT(treeOf(target()),
              ElementsAre("index.html", "www/", "www/a b.bin", "www/deep/", "www/deep/x.txt", "www/empty/"));
  EXPECT_EQ(contentsOf(target() / "index.html"),
            platformLineEnd() == LineEnd::lf ? "one\ntwo\n" : "one\r\ntwo\r\n");
  EXPECT_EQ(contentsOf(target() / "www/a b.bin"), std::string("\r\n\0\n", 4));
  EXPECT_EQ(display.item(0, ReportColumn::status), "Completed");
  EXPECT_EQ(display.item(0, ReportColumn::files), "3");
  EXPECT_EQ(display.item(0, ReportColumn::errors), " - ");
  EXPECT_EQ(display.item(0, ReportColumn::size), "14.000 Bytes");
  EXPECT_FALSE(display.logged("link")) << "a link leaves no trace";
  EXPECT_FALSE(display.logged("hunter22"));
  EXPECT_THAT(stages.calls, ElementsAre("before", "profile ", "archive site", "after"));
  EXPECT_THAT(display.hourglass, ElementsAre(true, false, true, false));
  EXPECT_THAT(display.running, ElementsAre(true, false));
  EXPECT_FALSE(BackupRunning());
}

TEST_F(RunTest, FramesAProfileInTheLog) {
  clock = at(2026, 11, 14, 9, 5, 7);
  profile.Folders.clear();
  run();
  std::vector<std::pair<std::string, Colour>> own;
  for (const auto& line : display.lines) {
    if (line.text.size() < 4 || !std::isdigit(static_cast<unsigned char>(line.text[0]))) {
      own.emplace_back(line.text, line.colour);
    }
  }
  const std::string rule = std::string(200, '-') + "\r\n";
  const std::vector<std::pair<std::string, Colour>> expected = {
      {rule, {153, 0, 153}},
      {"        site\r\n", {255, 0, 204}},
      {rule, {153, 0, 153}},
      {"Started at: 09:05:07\r\n", {255, 0, 255}},
      {"Trying to connect and login through LAN connection.\r\n", {255, 0, 255}},
      {"Connecting... \r\n", {0, 0, 255}},
      {"Connected to: 127.0.0.1\r\n", {0, 0, 255}},
      {"Finished at: 09:05:07\r\n", {0, 102, 0}},
      {"Logging out ...\r\n", {204, 0, 204}},
      {rule, {0, 51, 255}},
      {"Closing Connection\r\n", {0, 0, 255}},
      {"Connection Closed\r\n", {0, 0, 255}},
      {"Finished all at: 11-14-2026 09:05:07\r\n", {0, 0, 255}},
      {"Good Bye.\r\n", {0, 0, 255}},
  };
  EXPECT_EQ(own, expected);
  EXPECT_EQ(display.rows.at(0), (std::vector<std::string>{"site", "11-14-2026 09:05", "11-14-2026 09:05",
                                                          "Completed", " - ", " - ", " - "}));
}

TEST_F(RunTest, WithoutProfilesOnlyTheActionsRun) {
  profile.name.clear();
  EXPECT_TRUE(run().empty());
  EXPECT_THAT(stages.calls, ElementsAre("before", "after"));
  EXPECT_THAT(display.log(), StartsWith("Finished all at: "));
  EXPECT_THAT(display.log(), ::testing::EndsWith("Good Bye.\r\n"));
}

TEST_F(RunTest, TakesProfilesInTheOrderOfTheirNamesAsText) {
  for (const char* name : {"2", "b", "10", "A"}) {
    SiteProfile one = profile;
    one.name = name;
    save(one);
  }
  profile.name = "off";
  profile.Status = 0;
  const auto results = run();
  ASSERT_EQ(results.size(), 4U) << "a disabled profile has no result";
  EXPECT_EQ(results[0].profileId + results[1].profileId + results[2].profileId + results[3].profileId,
            "102Ab");
  EXPECT_FALSE(display.logged("off"));
  EXPECT_EQ(display.rows.size(), 4U);
}

TEST_F(RunTest, GivesEveryRunItsFolderWhenAsked) {
  clock = at(2026, 11, 14);
  settings.UniqueBackup = 1;
  server.addFile("/a.bin", "x");
  run();
  EXPECT_TRUE(fs::exists(folder / "site-11-14-2026" / "a.bin"));
}

TEST_F(RunTest, AFailingStageEndsNothingButItself) {
  stages.fail = true;
  server.addFile("/a.bin", "x");
  EXPECT_TRUE(run().at(0).completed);
  EXPECT_THAT(stages.calls, ElementsAre("before", "profile ", "archive site", "after"));
}

// --- incremental

TEST_F(RunTest, FetchesWhatTheRuleForDatesSaysAndNothingElse) {
  settings.BackupMode = 2;
  server.addFile("/a.bin", "new");
  const struct {
    const char* name;
    const char* listed;
    std::optional<LocalDateTime> local;  // of the copy, if there is one
    bool fetched;
    const char* logged;
  } cases[] = {
      {"no copy", "Jan  1  2020", std::nullopt, true, ""},
      {"same date", "Jan  1  2020", at(2020, 1, 1, 12), false, "Skipped: File upto date\r\n"},
      {"listed later", "Jan  2  2020", at(2020, 1, 1, 12), false, "Skipped: File upto date\r\n"},
      {"listed earlier", "Dec 31  2019", at(2020, 1, 1, 12), true, "Time is less\r\n"},
  };
  for (const auto& c : cases) {
    display = {};
    server.setListing("/", std::string("-rw-r--r-- 1 o g 3 ") + c.listed + " a.bin\r\n");
    fs::create_directories(target());
    fs::remove(target() / "a.bin");
    if (c.local) {
      writeFile(target() / "a.bin", "old");
      fs::last_write_time(target() / "a.bin", std::chrono::file_clock::from_sys(LocalToUtc(*c.local)));
    }
    run();
    EXPECT_EQ(contentsOf(target() / "a.bin"), c.fetched ? "new" : "old") << c.name;
    EXPECT_TRUE(display.logged(c.logged)) << c.name << display.log();
    EXPECT_EQ(display.logged(" : 2020-01-01 12:00:00\r\n"), c.local.has_value()) << c.name;
    EXPECT_EQ(display.item(0, ReportColumn::files), "1") << c.name << ": skipped files count as well";
  }
}

TEST_F(RunTest, ASecondRunFetchesAllButAnIncrementalOneNothing) {
  server.addFile("/a.bin", "x");
  server.addFile("/b/c.txt", "y\n", "Jun 15 12:34");
  run();
  run();
  EXPECT_EQ(server.count("RETR"), 4U);
  EXPECT_FALSE(display.logged(" : ")) << "a full run asks no dates";
  settings.BackupMode = 2;
  run();
  EXPECT_EQ(server.count("RETR"), 4U);
  EXPECT_EQ(display.count("Skipped: File upto date\r\n"), 2);
}

// --- what the session is told

TEST_F(RunTest, SendsTheTypeBeforeEachListingAndFile) {
  server.addFile("/a.html", "x");
  server.addFile("/b.bin", "x");
  profile.DefaultDir = "/start";
  server.addFolder("/start");
  server.setListing("/start", "");
  run();
  std::vector<std::string> told;
  for (const std::string& command : server.commands()) {
    if (command.starts_with("TYPE") || command.starts_with("RETR") || command.starts_with("CWD") ||
        command == "PWD") {
      told.push_back(command);
    }
  }
  EXPECT_THAT(told, ElementsAre("CWD /start", "TYPE A", "CWD /", "PWD", "TYPE A",  // the profile's folder
                                "TYPE A", "CWD /start", "PWD", "TYPE A",           // the one below it
                                "TYPE A", "RETR /a.html", "TYPE I", "RETR /b.bin"));
}

TEST_F(RunTest, HandsTheActiveModeToTheClientAndNoPortRange) {
  profile.PASV = 0;
  profile.ManualPort = 1;
  profile.MinData = "1";
  profile.MaxData = "2";  // nothing could be opened there
  server.addFile("/a.bin", "x");
  run();
  EXPECT_EQ(contentsOf(target() / "a.bin"), "x");
  EXPECT_EQ(server.count("EPSV") + server.count("PASV"), 0U);
}

TEST_F(RunTest, TriesToLogInUntilItWorks) {
  int refusals = 3;
  server.on("PASS", [&](Session& s) { refusals-- > 0 ? s.reply("530 Not yet.") : s.answerAsUsual(); });
  server.addFile("/a.bin", "x");
  ticks = 0;
  settings.ConnectionDelay = 7;
  EXPECT_TRUE(run().at(0).completed);
  EXPECT_EQ(display.count("Trying to connect and login through LAN connection.\r\n"), 4);
  EXPECT_EQ(display.count("Waiting 7 Seconds Before Retrying...\r\n"), 3);
  EXPECT_EQ(display.count("Ftp Error: The server refused the password: 530 Not yet.\r\n"), 3);
  EXPECT_GE(*ticks, 21'000);
  EXPECT_EQ(contentsOf(target() / "a.bin"), "x");
}

TEST_F(RunTest, AStopEndsTheLoginLoopAndTheProfile) {
  server.on("PASS", replies("530 Never."));
  pump = [this] {
    if (display.count("Waiting 0 Seconds") == 2) controller->Stop();
  };
  const auto results = run();
  EXPECT_FALSE(results.at(0).completed);
  EXPECT_TRUE(display.logged("Error: Unable to login\r\n"));
  EXPECT_EQ(display.item(0, ReportColumn::status), "Running")
      << "a profile that never logged in keeps its row";
  EXPECT_FALSE(display.logged("Finished at:"));
  EXPECT_THAT(stages.calls, ElementsAre("before", "profile ", "after"));
  EXPECT_TRUE(display.logged("Good Bye."));
}

TEST_F(RunTest, TriesAProxyAgainUntilItLeadsToTheServer) {
  ScriptedSocksServer proxy;
  proxy.set({.reply = "\x05\x05"});
  server.addFile("/a.bin", "a");
  profile.ProxyType = 2;
  profile.ProxyHost = "127.0.0.1";
  profile.ProxyPort = std::to_string(proxy.port());
  profile.ProxyUsername = "keeper";
  profile.ProxyPassword = "dGhpcw==";  // as it is, whatever it looks like
  pump = [&] {
    if (display.count("the proxy says that the host refuses the connection") == 2) proxy.set({});
  };
  EXPECT_TRUE(run().at(0).completed);
  EXPECT_EQ(contentsOf(target() / "a.bin"), "a");
  EXPECT_EQ(proxy.requests().back().password, "dGhpcw==");
}

// --- networks

TEST_F(RunTest, WaitsForALanWhateverTheUserSays) {
  int asked = 0;
  network = [&](std::uint32_t&) { return ++asked > 5; };
  ticks = 0;
  settings.ConnectionDelay = 3;
  pump = [this] {
    if (display.count("No LAN Connection") == 2) controller->Stop();
  };
  profile.name.clear();
  run();
  EXPECT_EQ(display.count("No LAN Connection. Waiting 3 Seconds Before Retrying...\r\n"), 4);
  EXPECT_GE(*ticks, 12'000);
}

TEST_F(RunTest, LeavesTheFieldToAnotherProgramsRun) {
  save(profile);
  RunServices refused = services();
  refused.acquireRunLock = [] { return nullptr; };
  RunController second(refused);
  backupRun.request();  // by the scheduler
  EXPECT_TRUE(second.RunBackup().empty());
  EXPECT_TRUE(second.refused());
  EXPECT_FALSE(BackupRunning()) << "the scheduler would never start a run again";
  EXPECT_TRUE(display.logged("Another backup run is in progress"));
  EXPECT_EQ(server.count("USER"), 0U);
}

// --- stop

TEST_F(RunTest, AStopInTheMiddleOfAFileUnwindsTheRun) {
  server.addFile("/a.bin", "x");
  server.addFile("/b.bin", std::string(1 << 20, 'x'));
  server.addFile("/c.bin", "x");
  SiteProfile next = profile;
  next.name = "the next";
  save(next);
  server.on("RETR /b.bin", [](Session& s) {
    s.openData();
    s.reply("150 Here it comes.");
    s.sendData("some");
    s.waitForClient();
    s.closeData();
    s.reply("426 Broken off.");
  });
  fs::create_directories(target());
  writeFile(target() / "b.bin", "the old file");
  pump = [this] {
    if (server.count("RETR /b.bin") == 1 && !controller->state().StopRequested) controller->Stop();
  };
  const auto results = run();
  ASSERT_EQ(results.size(), 1U) << "the next profile is not begun";
  EXPECT_FALSE(results[0].completed);
  EXPECT_EQ(results[0].failures.count(), 0U) << "the user wanted it so";
  EXPECT_EQ(display.item(0, ReportColumn::status), "Stoped");
  EXPECT_EQ(display.rowColours[0][static_cast<std::size_t>(ReportColumn::status)], (Colour{255, 0, 0}));
  EXPECT_FALSE(display.logged("Logging out ..."));
  EXPECT_TRUE(display.logged("Finished at: "));
  EXPECT_TRUE(display.logged("Connection Closed"));
  EXPECT_TRUE(display.logged("Good Bye."));
  EXPECT_THAT(stages.calls, ElementsAre("before", "profile ", "archive site", "after"));
  EXPECT_EQ(contentsOf(target() / "b.bin"), "the old file");
  EXPECT_THAT(treeOf(target()), ElementsAre("a.bin", "b.bin"));
  EXPECT_EQ(controller->ftpState(), FtpState::closed);

  // And the next run is not harmed by it.
  pump = nullptr;
  server.on("RETR /b.bin", [](Session& s) { s.answerAsUsual(); });
  EXPECT_TRUE(run().at(0).completed);
}

// --- progress

TEST_F(RunTest, ShowsSizeAndProgressOfAFile) {
  server.addFile("/a.bin", std::string(4 << 20, 'x'));
  run();
  EXPECT_THAT(display.sizes, ElementsAre("4.000 MB"));
  EXPECT_THAT(display.progress, ::testing::Contains(100));
  EXPECT_EQ(display.progress.back(), 0);
  EXPECT_TRUE(std::is_sorted(display.progress.begin(), display.progress.end() - 1));
}

}  // namespace
}  // namespace quillmoor
