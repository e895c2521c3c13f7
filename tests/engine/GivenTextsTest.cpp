// Texts, colours and numbers that are given, written out once more: nothing here is taken from the constants
// that it checks.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <string>
#include <tuple>
#include <vector>

#include "TestPlatform.h"
#include "browser/BrowserRow.h"
#include "engine/FtpConnection.h"
#include "engine/RunWorld.h"
#include "profiles/SettingsStore.h"
#include "profiles/SiteProfileEditor.h"
#include "shell/PaneTable.h"

namespace quillmoor {
namespace {

using namespace testing;  // of this project
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsSupersetOf;
using Session = testing::ScriptedFtpServer::Session;
namespace fs = std::filesystem;

class GivenTextsTest : public ::testing::Test, protected RunWorld {
 protected:
  /// Text, colour and emphasis of everything appended to the log. An emphasised append sets the colour of
  /// button faces first.
  using Append = std::tuple<std::string, Colour, bool>;
  std::vector<Append> appended() const {
    std::vector<Append> all;
    std::size_t next = 0;
    for (const auto& line : display.lines) {
      const bool emphasis = display.colours.at(next) == kButtonFace;
      next += emphasis ? 2 : 1;
      EXPECT_EQ(display.colours.at(next - 1), line.colour) << line.text;
      all.emplace_back(line.text, line.colour, emphasis);
    }
    return all;
  }
};

constexpr Colour kBlack{0, 0, 0};

TEST_F(GivenTextsTest, ColourTheLinesOfAWalk) {
  settings.BackupMode = 2;
  clock = *MakeLocalDateTime({2026, 11, 14, 9, 5, 7, 0});
  server.addFile("/same.bin", "x", "Jan  1  2020");
  server.addFile("/sub/gone.bin", "x");
  server.on("RETR /sub/gone.bin", refusesData("550 No."));
  fs::create_directories(target());
  writeFile(target() / "same.bin", "x");
  fs::last_write_time(target() / "same.bin", std::chrono::file_clock::from_sys(
                                                 LocalToUtc(*MakeLocalDateTime({2020, 1, 1, 12, 0, 0, 0}))));
  run();
  EXPECT_THAT(appended(), IsSupersetOf(std::vector<Append>{
                              {"Directory: /sub\r\n", {153, 0, 153}, true},
                              {"Retriving: ", {0, 0, 255}, true},
                              {"/same.bin\r\n", {0, 51, 204}, false},
                              {"Skipped: ", {255, 0, 0}, false},
                              {"File upto date\r\n", {0, 255, 0}, true},
                              {"Ftp Error: The server refused RETR: 550 No.\r\n", {255, 0, 0}, true},
                              {"Ftp Error: 550 No.\r\n", {102, 0, 102}, true},  // of the progress event
                              {"226 Listed.\r\n", {0, 102, 0}, true},
                          }));
  EXPECT_EQ(display.rowColours.at(0).at(static_cast<std::size_t>(ReportColumn::status)), (Colour{0, 102, 0}));
  EXPECT_EQ(display.rowColours.at(0).at(static_cast<std::size_t>(ReportColumn::profile)), kBlack);
}

TEST_F(GivenTextsTest, ColourTheLinesOfWaits) {
  ticks = 0;
  settings.ConnectionDelay = 3;
  settings.AutoHangUp = 1;
  server.once("PASS", replies("530 Not yet."));
  int asked = 0;
  network = [&](std::uint32_t&) { return ++asked > 2; };
  run();
  settings.AutoDial = 1;
  settings.AutoDialUpConnection = "Office";
  dialUp.onDial = [this] {
    dialUp.state = kDialUpConnected;
    dialUp.systemUp = true;
  };
  server.on("PASS", replies("530 Never."));
  pump = [this] {
    if (server.count("PASS") > 3) controller->Stop();
  };
  run();
  EXPECT_THAT(appended(),
              IsSupersetOf(std::vector<Append>{
                  {"No LAN Connection. Waiting 3 Seconds Before Retrying...\r\n", {255, 0, 255}, false},
                  {"Trying to connect and login through LAN connection.\r\n", {255, 0, 255}, false},
                  {"Waiting 3 Seconds Before Retrying...\r\n", {255, 0, 255}, false},
                  {"Dialing the connection Office\r\n", {0, 0, 255}, false},
                  {"Error: Unable to login\r\n", {255, 0, 0}, true},
                  {"Disconnecting Dial-up connection.\r\n", {0, 0, 255}, true},
                  {"Disconnected.\r\n", {255, 0, 255}, true},
              }));
}

TEST_F(GivenTextsTest, ShowTheRateOfATransfer) {
  ticks = 0;
  server.addFile("/a.bin", std::string(2048, 'x'));
  std::promise<void> second;  // it takes one, and then sends
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
  EXPECT_THAT(display.rates, Contains("2.0 KB/sec"));
}

TEST_F(GivenTextsTest, CountEveryProfileFromNothing) {
  server.addFile("/one/a.bin", "abc");
  server.addFile("/one/b.bin", "abcd");
  server.addFile("/two/c.bin", "ab");
  server.on("RETR /one/b.bin", refusesData("550 No."));
  profile.name = "first";
  profile.Folders = {"/one"};
  save(profile);
  profile.name = "second";
  profile.Folders = {"/two"};
  const auto results = run();
  ASSERT_EQ(results.size(), 2U);
  const struct {
    std::size_t failures;
    const char *files, *size;
  } rows[] = {{1, "2", "7.000 Bytes"}, {0, "1", "2.000 Bytes"}};
  for (std::size_t i = 0; i < 2; ++i) {
    EXPECT_EQ(results[i].failures.count(), rows[i].failures) << i;
    EXPECT_EQ(display.item(i, ReportColumn::files), rows[i].files) << i;
    EXPECT_EQ(display.item(i, ReportColumn::size), rows[i].size) << i;
  }
}

// A login counts before the first folder is asked for, and a file bears the listed date whatever became of
// it.
TEST_F(GivenTextsTest, OutliveARefusedFolderAndARefusedFile) {
  profile.DefaultDir = "/gone";
  server.addFile("/a.bin", "new", "Jan  1  2020");
  server.addFile("/b.bin", "new");
  server.on("RETR /a.bin", refusesData("550 No."));
  fs::create_directories(target());
  writeFile(target() / "a.bin", "old");
  EXPECT_TRUE(run().at(0).completed);
  EXPECT_EQ(contentsOf(target() / "b.bin"), "new");
  EXPECT_EQ(contentsOf(target() / "a.bin"), "old");
  EXPECT_EQ(fs::last_write_time(target() / "a.bin"), fs::last_write_time(target() / "b.bin"));
}

TEST(GivenNumbers, AreHandedToTheClient) {
  FtpClient client;
  RunProfileFields profile;
  profile.Timeout = 30;
  profile.ProxyType = 3;
  profile.ProxyHost = "h";
  profile.ProxyPort = 4;
  profile.ProxyUsername = "u";
  profile.ProxyPassword = "p";
  for (const bool passive : {true, false}) {
    profile.PASV = passive;
    SetFtpProperties(client, profile);
    EXPECT_EQ(client.passive(), passive);
  }
  EXPECT_EQ(client.timeoutMs, 30'000);
  EXPECT_EQ(client.proxyType * 10 + client.proxyPort, 34);
  EXPECT_EQ(client.proxyHost + client.proxyUserName + client.proxyPassword, "hup");
}

TEST(GivenNumbers, AreTheDefaultsOfTheSettings) {
  const std::string_view given =
      "MainLeft=1000|MainTop=1000|MainWidth=11685|MainHeight=8085|TransferType=1|Passive=True|Timeout=30|"
      "RemotePort=21|SchedualHour=12|SchedualMinute=30|SchedualSunday=0|SchedualMonday=0|SchedualTusday=0|"
      "SchedualWednesday=0|SchedualThrusday=0|SchedualFriday=0|SchedualSaturday=0|ProcessPriority=32|"
      "AutoDial=1|AutoHangUp=1|AutoDialUpConnection=|AutoStartUp=1|BackupMode=1|UniqueBackup=0|CreateZip=1|"
      "SplitZip=0|ZipSpanSize=1024|ZipSelfExtract=0|ZipPassword=|ZipCopies=|RunBefore=|RunAfter=|"
      "ConnectBefore=|ConnectAfter=|FtpRetryCount=5|ConnectionDelay=5|";
  std::string keys;
  for (const auto& setting : kSettings)
    keys.append(setting.key).append("=").append(setting.defaultText).append("|");
  EXPECT_EQ(keys.substr(0, given.size()), given) << "the keys in the order in which they are read";
  const OwnRegistry registry;
  const ApplicationSettings s = LoadApplicationSettings();
  EXPECT_THAT((std::vector<double>{s.MainLeft, s.MainTop, s.MainWidth, s.MainHeight}),
              ElementsAre(1000, 1000, 11685, 8085));
  EXPECT_TRUE(s.Passive);
  EXPECT_THAT((std::vector{s.TransferType, s.Timeout, s.RemotePort, s.ScheduleHour, s.ScheduleMinute,
                           s.ProcessPriority, s.AutoDial, s.AutoHangUp, s.AutoStartUp, s.BackupMode,
                           s.UniqueBackup, s.CreateZip, s.SplitZip, s.ZipSpanSize, s.ZipSelfExtract,
                           s.FtpRetryCount, s.ConnectionDelay}),
              ElementsAre(1, 30, 21, 12, 30, 32, 1, 1, 1, 1, 0, 1, 0, 1024, 0, 5, 5));
  EXPECT_THAT(s.ScheduleDays, ::testing::Each(0));
  EXPECT_EQ(LoadAsciiExtensions(),
            ".txt|.text|.asp|.bash|.bat|.cfm|.inc|.mak|.php|.php3|.php4|.qmail|.pas|.cpp|.c|.cxx|.h|.hpp|.xs|"
            ".rc|.bas|.frm|.vbs|.js|.css|.cgi|.pm|.pl|.t|.html|.htm|.shtm|.shtml|.dhtml|.phtml|.java|.jsp|"
            ".config|.manifest|.log|.sql");
}

// Blanks at their ends and between their words included.
TEST(GivenWords, AreKeptToTheLetter) {
  EXPECT_THAT(kProxyTypes,
              ElementsAre(std::string("None"), std::string("Socks V4"), std::string("Socks V5"),
                          std::string("SITE Hostname "), std::string("USER Logon"),
                          std::string("USER No Logon "), std::string("OPEN"), std::string("Pipe")));
  EXPECT_THAT(kNoFolders, ElementsAre("No folders selected to backup", " Click the Connect button to connect",
                                      " to the FTP site and select the directories", "  to backup."));
  EXPECT_THAT(kBrowserColumns, ElementsAre("Name", "Size", "Date", "User", "Group", "Permissions"));
  std::string items;
  for (const CommandItem& item : kCommandItems)
    items += std::to_string(item.id) + std::string(item.caption) + " ";
  EXPECT_EQ(items, "30001Add 30002Delete 30003Save 30005Exit ");
  std::string panes;
  for (const Pane& pane : kPanes) panes += std::to_string(pane.id) + pane.title + " ";
  EXPECT_EQ(panes, "2Profiles 3Backup 4Settings 5Options 8Help ");
}

}  // namespace
}  // namespace quillmoor
