// Whole backup runs against a server in memory.
#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <string>
#include <vector>

#include "engine/BackupRunning.h"
#include "engine/RunWorld.h"
#include "platform/ftp/NvtText.h"
#include "profiles/mIni.h"

namespace quillmoor {
namespace {

using namespace testing;  // of this project
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using Session = testing::ScriptedFtpServer::Session;
namespace fs = std::filesystem;

LocalDateTime at(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
  return *MakeLocalDateTime({year, month, day, hour, minute, second, 0});
}

using Line = RecordingDisplay::Line;

class RunTest : public ::testing::Test, protected RunWorld {
 protected:
  /// Puts a file into the copy, with its date.
  void writeCopy(const fs::path& file, LocalDateTime date) {
    fs::create_directories(file.parent_path());
    writeFile(file, "old");
    fs::last_write_time(file, std::chrono::file_clock::from_sys(LocalToUtc(date)));
  }
};

TEST_F(RunTest, MirrorsAFolderAndAllBelowIt) {
  server.addFile("/index.html", "one\ntwo\n");
  server.addFile("/www/a b.bin", std::string("\r\n\0\n", 4));
  server.addFile("/www/deep/x.txt", "x\n");
  server.addFolder("/www/empty");
  settings.FtpRetryCount = 0;  // makes one attempt all the same
  profile.PASV = 0;
  profile.ManualPort = 1;
  profile.MinData = profile.MaxData = "1";  // is not used: nothing could be opened there
  EXPECT_TRUE(run().at(0).completed);
  EXPECT_EQ(server.count("EPSV") + server.count("PASV"), 0U);
  EXPECT_THAT(treeOf(target()),
              ElementsAre("index.html", "www/", "www/a b.bin", "www/deep/", "www/deep/x.txt", "www/empty/"));
  EXPECT_EQ(contentsOf(target() / "index.html"),
            platformLineEnd() == LineEnd::lf ? "one\ntwo\n" : "one\r\ntwo\r\n");
  EXPECT_EQ(contentsOf(target() / "www/a b.bin"), std::string("\r\n\0\n", 4));
  EXPECT_EQ(fs::last_write_time(target() / "www/a b.bin"),
            std::chrono::file_clock::from_sys(LocalToUtc(at(2020, 1, 1, 12))));
  EXPECT_EQ(display.item(0, ReportColumn::status), "Completed");
  EXPECT_EQ(display.item(0, ReportColumn::files), "3");
  EXPECT_EQ(display.item(0, ReportColumn::size), "14.000 Bytes");
  EXPECT_FALSE(display.logged("hunter22"));
  EXPECT_THAT(stages.calls, ElementsAre("before", "profile", "archive site", "after"));
  EXPECT_THAT(display.hourglass, ElementsAre(true, false, true, false));
  EXPECT_THAT(display.running, ElementsAre(true, false));
  EXPECT_FALSE(BackupRunning());
}

TEST_F(RunTest, LogsAProfileInColoursAndUsesAFolderPerRun) {
  settings.BackupMode = 2;
  settings.UniqueBackup = 1;
  settings.AutoDial = 2;  // no setting but 1 dials
  settings.FtpRetryCount = 1;
  clock = at(2026, 11, 14, 9, 5, 7);
  server.addFile("/sub/gone.bin", "x");
  server.addFile("/same.bin", "x");
  server.on("RETR", refusesData("550 No."));
  writeCopy(folder / "site-11-14-2026/same.bin", at(2020, 1, 1, 12));
  run();
  EXPECT_THAT(display.lines, Contains(Line{"226 Listed.\r\n", {0, 102, 0}, true}));
  auto own = display.lines;  // without the server's replies and the dates compared
  std::erase_if(own, [](const Line& line) { return std::isdigit(static_cast<unsigned char>(line.text[0])); });
  const std::string rule = std::string(200, '-') + "\r\n";
  EXPECT_EQ(own, (std::vector<Line>{
                     {rule, {153, 0, 153}, true},
                     {"        site\r\n", {255, 0, 204}, true},
                     {rule, {153, 0, 153}, true},
                     {"Started at: 09:05:07\r\n", {255, 0, 255}, true},
                     {"Trying to connect and login through LAN connection.\r\n", {255, 0, 255}, false},
                     {"Connecting... \r\n", {0, 0, 255}, true},
                     {"Connected to: 127.0.0.1\r\n", {0, 0, 255}, true},
                     {"Directory: /sub\r\n", {153, 0, 153}, true},
                     {"Retriving: ", {0, 0, 255}, true},
                     {"/sub/gone.bin\r\n", {0, 51, 204}, false},
                     {"Ftp Error: The server refused RETR: 550 No.\r\n", {255, 0, 0}, true},
                     {"Ftp Error: 550 No.\r\n", {102, 0, 102}, true},  // of the progress event
                     {"Retriving: ", {0, 0, 255}, true},
                     {"/same.bin\r\n", {0, 51, 204}, false},
                     {"Skipped: ", {255, 0, 0}, false},
                     {"File upto date\r\n", {0, 255, 0}, true},
                     {"Finished at: 09:05:07\r\n", {0, 102, 0}, true},
                     {"Logging out ...\r\n", {204, 0, 204}, true},
                     {rule, {0, 51, 255}, true},
                     {"Closing Connection\r\n", {0, 0, 255}, true},
                     {"Connection Closed\r\n", {0, 0, 255}, true},
                     {"site: 1 failure\r\n", {255, 0, 0}, true},
                     {"    /sub/gone.bin: The server refused RETR: 550 No.\r\n", {255, 0, 0}, true},
                     {"Finished all at: 11-14-2026 09:05:07\r\n", {0, 0, 255}, true},
                     {"Good Bye.\r\n", {0, 0, 255}, true},
                 }));
  EXPECT_EQ(display.rows.at(0), (std::vector<std::string>{"site", "11-14-2026 09:05", "11-14-2026 09:05",
                                                          "Completed", "2", " - ", "2.000 Bytes"}));
  EXPECT_EQ(display.rowColours[0][static_cast<std::size_t>(ReportColumn::status)], (Colour{0, 102, 0}));
  EXPECT_EQ(display.rowColours[0][static_cast<std::size_t>(ReportColumn::profile)], (Colour{0, 0, 0}));
}

TEST_F(RunTest, RunsProfilesInTheOrderOfTheirNamesAndCountsEachFromZero) {
  server.addFile("/one/a.bin", "abc");
  server.addFile("/one/b.bin", "abcd");
  server.addFile("/two/c.bin", "ab");
  server.on("RETR /one/b.bin", refusesData("550 No."));
  for (const char* name : {"2", "b", "10", "A"}) {
    profile.name = name;
    profile.Folders = {profile.name == "10" ? "/one" : "/two"};
    save(profile);
  }
  profile.name = "off";
  profile.Status = 0;
  const auto results = run();
  std::string report;
  for (std::size_t i = 0; i < results.size(); ++i) {
    report += results[i].profileId + ": " + std::to_string(results[i].failures.count()) + " " +
              display.item(i, ReportColumn::files) + " " + display.item(i, ReportColumn::size) + "|";
  }
  EXPECT_EQ(report, "10: 1 2 7.000 Bytes|2: 0 1 2.000 Bytes|A: 0 1 2.000 Bytes|b: 0 1 2.000 Bytes|");
  EXPECT_FALSE(display.logged("off"));
}

// --- which files are fetched, and how

TEST_F(RunTest, FetchesWhatTheRuleForDatesSaysAndNothingElse) {
  server.addFile("/a.bin", "new");
  const struct {
    const char* name;
    std::int32_t mode;
    const char* listed;
    std::optional<LocalDateTime> local;  // of the copy, if there is one
    bool fetched;
    const char* logged;
  } cases[] = {
      {"no copy", 2, "Jan  1  2020", std::nullopt, true, ""},
      {"same date", 2, "Jan  1  2020", at(2020, 1, 1, 12), false, "Skipped: File upto date\r\n"},
      {"listed later", 2, "Jan  2  2020", at(2020, 1, 1, 12), false, "Skipped: File upto date\r\n"},
      {"listed earlier", 2, "Dec 31  2019", at(2020, 1, 1, 12), true, "Time is less\r\n"},
      {"a full run", 1, "Jan  1  2020", at(2020, 1, 1, 12), true, ""},
  };
  for (const auto& c : cases) {
    display = {};
    settings.BackupMode = c.mode;
    server.setListing("/", std::string("-rw-r--r-- 1 o g 3 ") + c.listed + " a.bin\r\n");
    fs::remove(target() / "a.bin");
    if (c.local) writeCopy(target() / "a.bin", *c.local);
    run();
    EXPECT_EQ(contentsOf(target() / "a.bin"), c.fetched ? "new" : "old") << c.name;
    EXPECT_TRUE(display.logged(c.logged)) << c.name << display.log();
    EXPECT_EQ(display.logged(" : 2020-01-01 12:00:00\r\n"), c.mode == 2 && c.local) << c.name;
    EXPECT_EQ(display.item(0, ReportColumn::files), "1") << c.name << ": skipped files count as well";
  }
}

// A login counts before the first folder is asked for, and a file bears the listed date whatever became of
// it.
TEST_F(RunTest, OutlivesARefusedFolderAndARefusedFile) {
  profile.DefaultDir = "/gone";
  server.addFile("/a.bin", "new");
  server.addFile("/b.bin", "new");
  server.on("RETR /a.bin", refusesData("550 No."));
  writeCopy(target() / "a.bin", at(2026, 1, 1));
  EXPECT_TRUE(run().at(0).completed);
  EXPECT_EQ(contentsOf(target() / "b.bin"), "new");
  EXPECT_EQ(contentsOf(target() / "a.bin"), "old");
  EXPECT_EQ(fs::last_write_time(target() / "a.bin"), fs::last_write_time(target() / "b.bin"));
}

TEST_F(RunTest, SendsTheTypeBeforeEachListingAndFile) {
  server.addFile("/a.html", "x");
  server.addFile("/b.bin", "x");
  profile.DefaultDir = "/start";
  server.addFolder("/start");
  server.setListing("/start", "");
  run();
  std::vector<std::string> sent;
  for (const std::string& command : server.commands()) {
    for (const char* verb : {"TYPE", "RETR", "CWD", "PWD"})
      if (command.starts_with(verb)) sent.push_back(command);
  }
  EXPECT_THAT(sent, ElementsAre("CWD /start", "TYPE A", "CWD /", "PWD", "TYPE A",  // the profile's folder
                                "TYPE A", "CWD /start", "PWD", "TYPE A",           // the one below it
                                "TYPE A", "RETR /a.html", "TYPE I", "RETR /b.bin"));
}

TEST_F(RunTest, RetriesAFileAlsoAcrossLostConnectionsAndGoesOnWithTheNext) {
  settings.FtpRetryCount = 3;
  for (const char* name : {"/a.bin", "/b.bin", "/c.bin", "/d.bin"}) server.addFile(name, "x");
  server.once("RETR /a.bin", refusesData("450 Busy."));
  server.once("RETR /a.bin", refusesData("450 Busy."));
  server.on("RETR /b.bin", refusesData("550 Forbidden."));
  server.on("RETR /c.bin", drops());
  EXPECT_TRUE(run().at(0).completed);
  EXPECT_THAT(treeOf(target()), ElementsAre("a.bin", "d.bin"));
  for (const char* command : {"RETR /a.bin", "RETR /b.bin", "RETR /c.bin"})
    EXPECT_EQ(server.count(command), 3U) << command;
  EXPECT_EQ(display.count("Ftp Error: 550 Forbidden.\r\n"), 3);
}

TEST_F(RunTest, SurvivesTheLossOfTheConnectionAnywhere) {
  const std::pair<const char*, ScriptedFtpServer::Action> cases[] = {
      {"TYPE A", drops()},
      {"CWD /www", drops()},
      {"PWD", drops()},
      {"LIST", transfers("150 Here.", "-rw-r--r-- 1 o g 1 Jan 1 2020 half a li", "")},
      {"TYPE I", drops()},
      {"RETR /www/a.bin", transfers("150 Here (4 bytes).", "ha", "")},
      {"RETR", refusesData("421 Restarting.")},
  };
  profile.Folders = {"/www"};
  server.addFile("/unselected.bin", "x");
  server.addFile("/www/a.bin", "whole");
  server.addFile("/www/deep/b.bin", "whole");
  for (const auto& [command, action] : cases) {
    fs::remove_all(target());
    display = {};
    server.once(command, action);
    EXPECT_TRUE(run().at(0).completed) << command;
    EXPECT_THAT(treeOf(target()), ElementsAre("www/", "www/a.bin", "www/deep/", "www/deep/b.bin")) << command;
    EXPECT_EQ(contentsOf(target() / "www/a.bin"), "whole") << command;
    EXPECT_EQ(display.count("Connected to: "), 2) << command;
  }
}

TEST_F(RunTest, ShowsSizeProgressAndRateOfAFile) {
  ticks = 0;
  server.addFile("/a.bin", std::string(4 << 20, 'x'));
  std::promise<void> second;  // that the server takes before it sends
  server.on("RETR", [passed = second.get_future().share()](Session& s) {
    passed.wait();
    s.answerAsUsual();
  });
  pump = [&] {
    if (*ticks != 0 || server.count("RETR") == 0) return;
    ticks = 1000;
    second.set_value();
  };
  run();
  EXPECT_THAT(display.sizes, ElementsAre("4.000 MB"));
  EXPECT_THAT(display.rates, Contains("4.0 MB/sec"));
  EXPECT_THAT(display.progress, Contains(100));
  EXPECT_EQ(display.progress.back(), 0);
  EXPECT_TRUE(std::is_sorted(display.progress.begin(), display.progress.end() - 1));
}

// --- what is refused

TEST_F(RunTest, RefusesProfilesWhoseLoginCouldNeverWork) {
  const SiteProfile good = profile;
  const struct {
    const char* problem;
    std::function<void()> damage;
  } rows[] = {{"Timeout is too large", [&] { profile.Timeout = "2147484"; }},
              {"The host is missing", [&] { profile.Host = ""; }},
              {"0 is no port number", [&] { profile.Port = ""; }},
              {"65536 is no port number", [&] { profile.Port = "65536"; }},
              {"no proxy type 8", [&] { profile.ProxyType = 8; }},
              {"The proxy's host is missing", [&] { profile.ProxyType = 7; }},
              {"Security cannot be read", [&] { profile.Security = 3; }},
              {"a proxy of the type \"USER Logon\"",
               [&] {
                 profile.Security = 2;
                 profile.ProxyType = 4;
               }},
              {"0 is no port number of a proxy", [&] {
                 profile.ProxyType = 2;
                 profile.ProxyHost = "127.0.0.1";
               }}};
  std::size_t reportRow = 0;
  for (const auto& row : rows) {
    profile = good;
    row.damage();
    EXPECT_THAT(run().at(0).problem, HasSubstr(row.problem));
    EXPECT_TRUE(display.logged(row.problem)) << row.problem;
    EXPECT_EQ(display.item(reportRow, ReportColumn::status), "Failed");
    EXPECT_NE(display.item(reportRow++, ReportColumn::finished), " - ");
  }
  profile = good;
  save(profile);
  mIni::WriteValue("site", "Password", "no Base64", profilesFile());
  profile.name.clear();  // saved already
  EXPECT_THAT(run().at(0).problem, HasSubstr("password cannot be deciphered"));
  EXPECT_EQ(server.count("USER"), 0U);
}

TEST_F(RunTest, GivesUpALoginForItsCertificateInOneLineThatSaysAllOfIt) {
  server.offerTls();
  server.addFile("/a.bin", "x");
  profile.Security = 1;
  EXPECT_FALSE(run().at(0).completed);
  EXPECT_EQ(server.count("AUTH") * 10 + server.count("USER"), 10U);
  const auto line = display.lineWith("Ftp Error: ");
  EXPECT_EQ(line.colour, (Colour{255, 0, 0}));
  for (const std::string& part :
       {server.fingerprint(), std::string("issued to CN=localhost"), std::string("by CN=localhost"),
        std::string("valid from "), std::string("(self-signed certificate)")})
    EXPECT_THAT(line.text, HasSubstr(part));
  profile.Certificate = server.fingerprint();
  EXPECT_TRUE(run().at(0).completed);
  EXPECT_EQ(contentsOf(target() / "a.bin"), "x");
}

TEST_F(RunTest, NothingThatAServerListsLeavesTheTargetFolder) {
  std::string listing;
  for (const char* entry : {"-../up.bin", "-..", "-c\rr.bin", "-esc\x1b[31m.bin", "-good.bin", "d../outside",
                            "da/b", "l../link -> x", "lesc\x1b[31m -> x"}) {
    listing += std::string(1, *entry) + "rw-r--r-- 1 o g 1 Jan  1  2020 " + (entry + 1) + "\r\n";
  }
  server.setListing("/", listing);
  server.addFile("/good.bin", "x");
  EXPECT_EQ(run().at(0).failures.count(), 5U);
  EXPECT_EQ(display.count("Error: Refused name"), 5) << "links are skipped whatever their names";
  EXPECT_THAT(treeOf(folder.path()), ElementsAre("Profiles.ini", "site/", "site/good.bin"));
  EXPECT_FALSE(display.logged("\x1b") || display.logged("link"));
}

TEST_F(RunTest, KeepsNamesApartThatDifferInCase) {
  const bool caseCounts = kLocalNameRules == LocalNameRules::posix;
  server.addFile("/README", "one");
  server.addFile("/readme", "two!");
  server.addFile("/Readme/below.bin", "x");
  EXPECT_TRUE(run().at(0).completed);
  // The folder is listed first; files whose names differ from its name in case only are logged and skipped.
  EXPECT_EQ(display.count("Error: Refused name"), caseCounts ? 0 : 2);
  EXPECT_EQ(contentsOf(target() / "Readme/below.bin"), "x");
  if (caseCounts) {
    EXPECT_EQ(contentsOf(target() / "README") + contentsOf(target() / "readme"), "onetwo!");
  }
}

TEST_F(RunTest, NoFolderThatAServerReportsLeavesTheTargetFolder) {
  for (const char* path : {"/../../outside", "/a/../..", "/a\x1b[2J", "/.[x].", "/.. "}) {
    server.on("PWD", [=](Session& s) { s.reply(std::string("257 \"") + path + "\" is where you are."); });
    EXPECT_TRUE(run().at(0).completed);
    EXPECT_THAT(treeOf(folder.path()), ElementsAre("Profiles.ini"));
  }
  EXPECT_EQ(display.count("Error: Refused folder"), 5);
}

TEST_F(RunTest, AProfileWhoseNameIsNoFolderNameIsNotRun) {
  for (const char* name : {"a/../../b", "..", ".[x]."}) {
    fs::remove(profilesFile());
    profile.name = name;
    EXPECT_FALSE(run().at(0).completed) << name;
    EXPECT_THAT(treeOf(folder.path()), ElementsAre("Profiles.ini")) << name;
  }
  EXPECT_EQ(display.count("Error: The profile's name cannot be the name of a folder"), 3);
}

// --- networks, and other runs

TEST_F(RunTest, WaitsForALanDespiteAStop) {
  int asked = 0;
  network = [&](std::uint32_t&) { return ++asked > 5; };
  ticks = 0;
  settings.ConnectionDelay = 3;
  pump = [this] {
    if (display.count("No LAN Connection") == 2) controller->Stop();
  };
  profile.name.clear();
  run();
  const std::string wait = "No LAN Connection. Waiting 3 Seconds Before Retrying...\r\n";
  EXPECT_EQ(display.count(wait), 4);
  EXPECT_EQ(display.lineWith(wait), (Line{wait, {255, 0, 255}, false}));
  EXPECT_GE(*ticks, 12'000);
  EXPECT_THAT(stages.calls, ElementsAre("before", "after"));
}

TEST_F(RunTest, IsRefusedWhileAnotherProgramRunsABackup) {
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

TEST_F(RunTest, AStopEndsTheLoginLoopAndTheProfile) {
  server.on("PASS", replies("530 Never."));
  pump = [this] {
    if (display.count("Waiting 0 Seconds") == 2) controller->Stop();
  };
  const auto results = run();
  EXPECT_FALSE(results.at(0).completed);
  EXPECT_THAT(display.lines, Contains(Line{"Error: Unable to login\r\n", {255, 0, 0}, true}));
  EXPECT_EQ(display.item(0, ReportColumn::status), "Running")
      << "a profile that never logged in keeps its row";
  EXPECT_FALSE(display.logged("Finished at:"));
  EXPECT_THAT(stages.calls, ElementsAre("before", "profile", "after"));
  EXPECT_TRUE(display.logged("Good Bye."));
}

TEST_F(RunTest, AStopInTheMiddleOfAFileUnwindsTheRun) {
  server.addFile("/a.bin", "x");
  server.addFile("/b.bin", std::string(1 << 20, 'x'));
  server.addFile("/c.bin", "x");
  SiteProfile next = profile;
  next.name = "the next";
  save(next);
  server.once("RETR /b.bin", [](Session& s) {
    s.openData();
    s.reply("150 Here it comes.");
    s.sendData("some");
    s.waitForClient();
    s.closeData();
    s.reply("426 Broken off.");
  });
  writeCopy(target() / "b.bin", at(2020, 1, 1));
  pump = [this] {
    if (server.count("RETR /b.bin") == 1 && !controller->state().StopRequested) controller->Stop();
  };
  const auto results = run();
  ASSERT_EQ(results.size(), 1U) << "the next profile is not started";
  EXPECT_FALSE(results[0].completed);
  EXPECT_EQ(results[0].failures.count(), 0U) << "the user stopped it";
  EXPECT_EQ(display.item(0, ReportColumn::status), "Stoped");
  EXPECT_EQ(display.rowColours[0][static_cast<std::size_t>(ReportColumn::status)], (Colour{255, 0, 0}));
  EXPECT_FALSE(display.logged("Logging out ..."));
  for (const char* line : {"Finished at: ", "Connection Closed", "Good Bye."})
    EXPECT_TRUE(display.logged(line)) << line;
  EXPECT_THAT(stages.calls, ElementsAre("before", "profile", "archive site", "after"));
  EXPECT_EQ(contentsOf(target() / "b.bin"), "old");
  EXPECT_THAT(treeOf(target()), ElementsAre("a.bin", "b.bin"));
  EXPECT_EQ(controller->ftpState(), FtpState::closed);

  pump = [] {};
  EXPECT_TRUE(run().at(0).completed) << "the next run is stopped too";
}

// --- dial-up

class DialUpRunTest : public ::testing::Test, protected RunWorld {
 protected:
  DialUpRunTest() {
    settings.AutoDial = 1;
    settings.AutoDialUpConnection = "Office";
    settings.ConnectionDelay = 5;
    ticks = 0;
    server.addFile("/a.bin", "x");
  }
  void connect(bool up = true) {
    dialUp.state = up ? kDialUpConnected : kDialUpDisconnected;
    dialUp.systemUp = up;
    dialUp.busy = false;
  }
  int waits() const { return display.count("Waiting 5 Seconds Before Retrying...\r\n"); }
  int dials() const { return display.count("Dialing the connection Office\r\n"); }
};

TEST_F(DialUpRunTest, DialsUntilAConnectionIsUp) {
  const struct {
    const char* name;
    const char* entry;
    std::function<void()> atDial;
    std::function<bool()> comesUp;  // asked by the pump
    int dials, waits;
    bool fails = false;
  } cases[] = {
      {"at once", "Office", [this] { connect(); }, [] { return false; }, 1, 0},
      {"while the pump runs", "Office", [this] { dialUp.busy = true; }, [this] { return *ticks >= 12'000; },
       3, 3},
      {"after a dial that failed", "Office", nullptr, [this] { return waits() == 2; }, 2, 2, true},
      {"once system and component agree", "Office", [this] { dialUp.state = kDialUpConnected; },
       [this] { return waits() == 1; }, 1, 1},
      {"made by somebody else, no entry being chosen", "", nullptr, [this] { return waits() == 3; }, 3, 3},
      {"up already", "Office", nullptr, [] { return true; }, 0, 0},
  };
  for (const auto& c : cases) {
    display = {};
    dialUp.calls.clear();
    dialUp.onDial = c.atDial;
    dialUp.dialThrows = c.fails;
    settings.AutoDialUpConnection = c.entry;
    ticks = 0;
    connect(c.dials == 0);
    pump = [&] {
      if (c.comesUp()) connect();
    };
    EXPECT_TRUE(run().at(0).completed) << c.name;
    EXPECT_EQ(display.count("Dialing the connection " + std::string(c.entry) + "\r\n"), c.dials) << c.name;
    EXPECT_EQ(display.count("Dialing"), c.dials) << c.name;
    EXPECT_EQ(waits(), c.waits) << c.name;
    EXPECT_GE(*ticks, c.waits * 5000) << c.name;
    EXPECT_FALSE(display.logged("LAN")) << c.name;
    std::vector<std::string> calls;
    for (int i = 0; i < c.dials && *c.entry; ++i) calls.insert(calls.end(), {"hang up", "dial Office"});
    EXPECT_EQ(dialUp.calls, calls) << c.name << ": and AutoHangUp is 0";
  }
}

TEST_F(DialUpRunTest, LogsInWithoutADelayUntilTheLineDropsAndDialsAgain) {
  connect();
  server.on("PASS", replies("530 Not yet."));
  pump = [this] {
    if (server.count("PASS") < 3) return;
    server.forgetRules();
    connect(false);
  };
  dialUp.onDial = [this] {
    pump = [] {};
    connect();
  };
  EXPECT_TRUE(run().at(0).completed);
  EXPECT_GE(server.count("PASS"), 4U);
  EXPECT_EQ(waits(), 0);
  EXPECT_EQ(dials(), 1);
}

TEST_F(DialUpRunTest, AStopEndsTheDialling) {
  for (const bool atDial : {true, false}) {  // or in the wait after it
    display = {};
    dialUp.calls.clear();
    connect(false);
    dialUp.onDial = [&] {
      dialUp.busy = true;
      if (atDial) controller->Stop();
    };
    pump = [&] {
      if (!atDial && waits() == 1 && !controller->state().StopRequested) controller->Stop();
    };
    EXPECT_TRUE(run().empty());
    EXPECT_EQ(dials(), 1);
    EXPECT_EQ(waits(), atDial ? 0 : 1);
    EXPECT_THAT(dialUp.calls, ElementsAre("hang up", "dial Office", "abort"));
    EXPECT_TRUE(display.logged("Good Bye."));
  }
  EXPECT_EQ(display.lineWith("Dialing"), (Line{"Dialing the connection Office\r\n", {0, 0, 255}}));
  EXPECT_EQ(display.lineWith("Waiting"), (Line{"Waiting 5 Seconds Before Retrying...\r\n", {255, 0, 255}}));
}

TEST_F(DialUpRunTest, HangsUpAtTheEndTheConnectionsOfSystemAndComponent) {
  settings.AutoDial = 0;
  profile.name.clear();
  const struct {
    const char* name;
    std::int32_t state;
    bool systemUp, busy;
    std::int32_t autoHangUp;
    std::vector<std::string> calls;
  } cases[] = {
      {"the component alone", 8192, false, false, 1, {"hang up system", "hang up"}},
      {"the system alone", 8193, true, false, 1, {"hang up system", "hang up"}},
      {"the system, and a dial in progress", 3, true, true, 1, {"hang up system", "abort", "hang up"}},
      {"none", 8193, false, false, 1, {}},
      {"not asked for", 8192, true, false, 0, {}},
      {"any other number", 8192, true, false, -1, {}},
  };
  for (const auto& c : cases) {
    display = {};
    dialUp.calls.clear();
    dialUp.state = c.state;
    dialUp.systemUp = c.systemUp;
    dialUp.busy = c.busy;
    settings.AutoHangUp = c.autoHangUp;
    run();
    EXPECT_EQ(dialUp.calls, c.calls) << c.name;
    EXPECT_EQ(display.lines.size(), c.autoHangUp == 1 ? 4U : 2U) << c.name;
    if (c.autoHangUp != 1) continue;
    EXPECT_EQ(display.lines[0], (Line{"Disconnecting Dial-up connection.\r\n", {0, 0, 255}, true}));
    EXPECT_EQ(display.lines[1], (Line{"Disconnected.\r\n", {255, 0, 255}, true}));
  }
}

TEST_F(RunTest, AProgrammingErrorIsAFailureOfTheRunWhichGoesOn) {
  server.addFile("/a.bin", "x");
  bool thrown = false;
  pump = [&] {
    if (!std::exchange(thrown, true)) throw std::logic_error("no such step");
  };
  std::vector<ProfileResult> results;
  EXPECT_NONFATAL_FAILURE(results = run(), "Internal error in FtpSession::TryLogin: no such step");
  ASSERT_EQ(results.size(), 2U);
  EXPECT_EQ(FailureSummary(results[0]), "1 failure: Internal error in FtpSession::TryLogin: no such step");
  EXPECT_TRUE(results[1].completed);
  EXPECT_EQ(display.count("Internal error in FtpSession::TryLogin: no such step\r\n"), 2)
      << "then, and at the end";
}

}  // namespace
}  // namespace quillmoor
