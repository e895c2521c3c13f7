// A run that is "Completed" and counts no failure has the whole site: each way in which it may not is
// counted, named in the log, and named again at the end.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "engine/RunWorld.h"
#include "platform/files/TargetLock.h"

namespace quillmoor {
namespace {

using namespace testing;  // of this project
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using Session = testing::ScriptedFtpServer::Session;
namespace fs = std::filesystem;

const Colour kRed{255, 0, 0};

/// The folder of the last CWD.
std::string folderOf(const std::vector<std::string>& commands) {
  const auto last = std::find_if(commands.rbegin(), commands.rend(),
                                 [](const std::string& line) { return line.starts_with("CWD "); });
  return last == commands.rend() ? "/" : last->substr(4);
}

class NothingLostTest : public ::testing::Test, protected RunWorld {
 protected:
  bool loggedInRed(const std::string& text) const {
    return std::any_of(display.lines.begin(), display.lines.end(), [&](const auto& line) {
      return line.colour == kRed && line.text.find(text) != std::string::npos;
    });
  }

  /// The red lines from the profile's count on to "Finished all at:".
  std::vector<std::string> endReport() const {
    std::vector<std::string> lines;
    for (const auto& line : display.lines) {
      if (line.text.starts_with("site: ") && line.colour == kRed) lines.clear();
      if (line.text.starts_with("Finished all at:")) break;
      lines.push_back(line.text);
    }
    return lines;
  }
};

TEST_F(NothingLostTest, WhatFailsIsCountedAndNamed) {
  const std::string kB = "-rw-r--r-- 1 o g 1 Jan  1  2020 b.bin\r\n";
  const struct {
    const char* name;
    std::function<void()> damage;
    std::size_t failures;
    const char* told;  // in red, before the end of the run
    const char* named;
  } rows[] = {
      {"nothing", [] {}, 0, "", ""},
      {"a file", [&] { server.on("RETR /sub/b.bin", replies("550 Forbidden.")); }, 1,
       "Ftp Error: ", "/sub/b.bin: "},
      {"all files", [&] { server.on("RETR", replies("550 Forbidden.")); }, 2, "Ftp Error: ", "/sub/b.bin: "},
      {"a folder", [&] { server.on("CWD /sub", replies("550 Forbidden.")); }, 1, "is being walked already",
       "/: "},
      {"the first folder", [&] { server.on("CWD", replies("550 Forbidden.")); }, 2, "Ftp Error: ", "/: "},
      {"a listing", [&] { server.on("LIST", replies("550 Forbidden.")); }, 1, "Ftp Error: ", "/: "},
      {"a listing that says in words that there is nothing",
       [&] { server.setListing("/sub", "No files found.\r\n"); }, 0, "", ""},
      {"a listing in no known form", [&] { server.setListing("/sub", "Volume in drive C has no label\r\n"); },
       1, "", "/sub: its listing"},
      {"the archive", [&] { stages.fail = true; }, 1, "", "archive: archive site"},
      {"the first folder of the profile", [&] { profile.DefaultDir = "/gone"; }, 1,
       "Error: Unable to enter the first folder: /gone", "/gone: "},
      {"a cut listing",
       [&] {
         server.on("LIST -a", transfers("150 Here.", "-rw-r--r-- 1 o g 1 Jan  1  2020 a.bin\r\n",
                                        "226 Output truncated to 1 matches"));
       },
       1, "has not listed all of the folder (Output truncated to 1 matches): /", "/: The server has not"},
      {"hidden files for the moment", [&] { server.once("LIST -a", refusesData("451 Try later.")); }, 1,
       "not listed hidden files this time: /", "/: The server"},
      {"a line that nobody can read",
       [&] { server.setListing("/sub", kB + "-rw-r--r-- 1 o g what is this\r\n"); }, 1,
       "Error: Unable to read a line of the listing of /sub: -rw-r--r-- 1 o g what is this",
       "/sub: a line of its listing cannot be read: -rw-r--r-- 1 o g what is this"},
      {"a file shorter than listed",
       [&] { server.on("RETR /sub/b.bin", transfers("150 Here.", "", "226 Done.")); }, 1,
       "Ftp Error: ", "/sub/b.bin: "},
      {"a type that is refused", [&] { server.on("TYPE I", replies("504 Text only.")); }, 2,
       "Error: Received as text (TYPE A), because the server refused TYPE I: /sub/b.bin",
       "/sub/b.bin: Received as text"},
      {"a name of our own",
       [&] {
         server.setListing("/sub", kB + "-rw-r--r-- 1 o g 1 Jan  1  2020 .quillmoor-unfinished-1.tmp\r\n");
       },
       1, "Error: Refused name (", ".quillmoor-unfinished-1.tmp: Refused name"},
      {"an empty folder whose copy is not",
       [&] {
         server.setListing("/", "");
         profile.Folders = {"/", "/sub"};
       },
       1, "listing is empty, but its copy holds files: /", "/: "},
      {"brackets in a path",
       [&] {
         server.addFile("/sub/photos [2024]/c.bin", "c");
         server.addFile("/sub/photos/c.bin", "c");
       },
       1, "Cut to /sub/photos/, which is not where its files are", "/sub/photos [2024]: "},
  };
  const SiteProfile good = profile;
  for (const auto& row : rows) {
    server.forgetRules();
    server.setListing("/",
                      "drwxr-xr-x 1 o g 1 Jan  1  2020 sub\r\n-rw-r--r-- 1 o g 1 Jan  1  2020 a.bin\r\n");
    server.setListing("/sub", kB);
    server.addFile("/a.bin", "a");
    server.addFile("/sub/b.bin", "b");
    profile = good;
    stages.fail = false;
    display = {};
    if (std::string(row.name) == "brackets in a path")
      server.setListing("/sub", "drwxr-xr-x 1 o g 1 Jan  1  2020 photos [2024]\r\n");
    row.damage();
    const auto results = run();
    EXPECT_TRUE(results.at(0).completed) << row.name;
    EXPECT_EQ(display.item(0, ReportColumn::status), "Completed") << row.name;
    EXPECT_EQ(display.item(0, ReportColumn::errors), " - ") << row.name;
    EXPECT_EQ(results.at(0).failures.count(), row.failures) << row.name;
    EXPECT_EQ(results.at(0).failed(), row.failures != 0) << row.name;
    EXPECT_TRUE(*row.told == '\0' || loggedInRed(row.told)) << row.name << "\n" << display.log();
    const auto end = endReport();
    if (row.failures == 0) continue;
    EXPECT_EQ(end.at(0), "site: " + std::to_string(row.failures) +
                             (row.failures == 1 ? " failure\r\n" : " failures\r\n"))
        << row.name;
    EXPECT_THAT(end.at(1), HasSubstr(std::string("    ") + row.named)) << row.name;
    EXPECT_EQ(end.size(), 1 + row.failures) << row.name;
  }
}

TEST_F(NothingLostTest, TwentyFailuresAreNamedAndTheOthersCounted) {
  for (int i = 0; i < 25; ++i) server.addFile("/" + std::to_string(100 + i), "x");
  server.on("RETR", replies("550 Forbidden."));
  settings.FtpRetryCount = 1;
  EXPECT_EQ(run().at(0).failures.count(), 25U);
  const auto end = endReport();
  ASSERT_EQ(end.size(), 22U);
  EXPECT_EQ(end[20].substr(0, 10), "    /119: ");
  EXPECT_EQ(end[21], "    and 5 more\r\n");
}

TEST_F(NothingLostTest, ALoopOfFoldersIsNotWalkedDeeperThanThreeRepetitions) {
  // A link to the folder that holds it, which the server lists as a folder: every path is a new one.
  server.on("PWD", [&](Session& s) { s.reply("257 \"" + folderOf(server.commands()) + "\""); });
  server.on("CWD", replies("250 Here."));
  server.on(
      "LIST",
      transfers("150 Here.", "drwxr-xr-x 1 o g 1 Jan  1  2020 again\r\n-rw-r--r-- 1 o g 1 Jan  1  2020 a\r\n",
                "226 Done."));
  server.on("RETR", transfers("150 Here.", "x", "226 Done."));
  EXPECT_EQ(run().at(0).failures.count(), 1U);
  EXPECT_TRUE(loggedInRed("as a link to one of them would; it is skipped: /again/again/again"));
  EXPECT_THAT(treeOf(target()), ElementsAre("a", "again/", "again/a", "again/again/", "again/again/a"));
}

TEST_F(NothingLostTest, FoldersThatLeadBackInManyWaysAreWalkedSoOftenAndNoMore) {
  // Each of four folders has a link to the first one, which the server lists as a folder.
  const auto line = [](const char* name) {
    return std::string("drwxr-xr-x 1 o g 1 Jan  1  2020 ") + name + "\r\n";
  };
  server.on("PWD", [&](Session& s) { s.reply("257 \"" + folderOf(server.commands()) + "\""); });
  server.on("CWD", replies("250 Here."));
  server.on("LIST", [&](Session& s) {
    const std::string here = folderOf(server.commands());
    const bool root = here == "/" || here.ends_with("/up");
    const std::string own = here.substr(here.rfind('/') + 1) + ".txt";
    transfers("150 Here.",
              root ? line("a") + line("b") + line("c") + line("d")
                   : line("up") + "-rw-r--r-- 1 o g 1 Jan  1  2020 " + own + "\r\n",
              "226 Done.")(s);
  });
  server.on("RETR", transfers("150 Here.", "x", "226 Done."));
  EXPECT_GT(run().at(0).failures.count(), 0U);
  EXPECT_LT(server.count("LIST"), 200U);
}

TEST_F(NothingLostTest, AFileInTheWrongTypeIsFetchedAgainByTheNextRun) {
  settings.BackupMode = 2;
  server.addFile("/a.bin", "a");
  server.on("TYPE I", replies("504 Text only."));
  EXPECT_EQ(run().at(0).failures.count(), 1U);
  EXPECT_EQ(run().at(0).failures.count(), 1U);
  server.forgetRules();
  EXPECT_EQ(run().at(0).failures.count(), 0U);
  EXPECT_EQ(server.count("RETR"), 3U);
}

TEST_F(NothingLostTest, ALinkIsPassedOverWhateverItIsCalled) {
  server.addFile("/a.bin", "a");
  for (const char* name : {"../up", "CON", "esc\x1b[31m", ".."})
    server.addLine("/", std::string("lrwxrwxrwx 1 o g 1 Jan  1  2020 ") + name + " -> x");
  EXPECT_EQ(run().at(0).failures.count(), 0U);
  EXPECT_FALSE(display.logged("Error"));
}

TEST_F(NothingLostTest, AFolderThatAnotherRunWritesIntoIsLeftToIt) {
  server.addFile("/a.bin", "a");
  SiteProfile next = profile;
  next.name = "the next";
  save(next);
  fs::create_directories(target());
  const auto others = TargetLock::acquire(target().string());
  const auto results = run();
  EXPECT_THAT(results.at(0).problem, HasSubstr("Another backup run is writing into the same folder"));
  EXPECT_TRUE(results.at(1).completed);
  EXPECT_EQ(treeOf(folder / "the next"), std::vector<std::string>{"a.bin"}) << "and no lock";
}

TEST_F(NothingLostTest, ARunPutsBackWhatAKilledOneHasLeft) {
  for (const char* where : {"", "copies/"}) {
    const fs::path waiting = folder / (where + std::string(".quillmoor-unfinished-old.zip"));
    fs::create_directories(waiting);
    writeFile(waiting / "old.zip", "former");
  }
  settings.ZipCopies = (folder / "copies").string();
  profile.Status = 0;  // it is put right for every profile
  run();
  EXPECT_EQ(contentsOf(folder / "old.zip"), "former");
  EXPECT_EQ(contentsOf(folder / "copies/old.zip"), "former");
}

TEST_F(NothingLostTest, NamesAsListedKeepsWhatIsCutOtherwise) {
  settings.NamesAsListed = 1;
  profile.name = "Site [a]";
  server.addFile("/photos [2024]/a.bin", "right");
  server.addFile("/photos/a.bin", "wrong");
  profile.Folders = {"/photos [2024]"};
  EXPECT_EQ(run().at(0).failures.count(), 0U);
  EXPECT_EQ(contentsOf(folder / "Site [a]/photos [2024]/a.bin"), "right");
}

TEST_F(NothingLostTest, ANetworkPathIsRefusedWhereItWouldBeCut) {
  if (kLocalNameRules != LocalNameRules::windows) GTEST_SKIP() << "no path of this system begins so";
  profile.SaveTo = "\\\\nas\\backup";
  EXPECT_THAT(run().at(0).problem, HasSubstr("SaveTo is a network path"));
  EXPECT_TRUE(loggedInRed("set NamesAsListed to 1"));
  EXPECT_EQ(server.count("USER"), 0U);
}

TEST_F(NothingLostTest, TwoProfilesOfOneFolderAreNotBothRun) {
  const struct {
    const char* name;
    const char* first;
    const char* second;
    std::string secondSaveTo;
  } rows[] = {{"brackets that are cut", "Site [a]", "Site [b]", profile.SaveTo},
              {"another path to it", "Site [a]", "Site [b]", profile.SaveTo + kLocalSeparator + "."},
              {"a folder inside", "a", "b", (folder / "a").string()}};
  server.addFile("/a.bin", "a");
  const SiteProfile good = profile;
  for (const auto& row : rows) {
    fs::remove(profilesFile());
    display = {};
    const std::size_t logins = server.count("USER");
    profile = good;
    profile.name = row.first;
    SiteProfile other = profile;
    other.name = row.second;
    other.SaveTo = row.secondSaveTo;
    save(other);
    const auto results = run();
    ASSERT_EQ(results.size(), 2U) << row.name;
    EXPECT_TRUE(results[0].completed) << row.name;
    EXPECT_FALSE(results[1].completed) << row.name;
    EXPECT_THAT(results[1].problem, HasSubstr("written into the same folder: ")) << row.name;
    EXPECT_EQ(display.item(1, ReportColumn::status), "Failed") << row.name;
    EXPECT_EQ(server.count("USER"), logins + 1) << row.name;
  }
}

TEST_F(NothingLostTest, ALoginHasAsManyAttemptsAsTheSettingAllows) {
  ticks = 0;
  settings.ConnectionDelay = 2;
  settings.LoginAttempts = 6;
  server.on("PASS", replies("530 Login incorrect."));
  SiteProfile next = profile;
  next.name = "the next";
  next.Password = "other";
  save(next);
  const auto results = run();
  EXPECT_EQ(server.count("PASS hunter22"), 6U);
  EXPECT_EQ(server.count("PASS other"), 6U) << "each profile has its turn";
  EXPECT_EQ(results.at(0).problem, "Unable to login");
  for (const char* pause : {"2", "4", "8", "16", "20"})
    EXPECT_EQ(display.count(std::string("Waiting ") + pause + " Seconds Before Retrying..."), 2) << pause;
  EXPECT_FALSE(display.logged("LoginAttempts"));
}

TEST_F(NothingLostTest, WithoutALimitTheFifthRefusalTellsOfTheSetting) {
  int refusals = 7;
  server.on("PASS", [&](Session& s) { refusals-- > 0 ? s.reply("530 No.") : s.answerAsUsual(); });
  EXPECT_TRUE(run().at(0).completed);
  EXPECT_EQ(display.count("the setting LoginAttempts sets a limit"), 1);
  EXPECT_EQ(display.count("Waiting 0 Seconds Before Retrying..."), 7);
}

TEST_F(NothingLostTest, ALoginGivenUpInTheMiddleEndsTheWalk) {
  settings.LoginAttempts = 2;
  for (const char* name : {"/a.bin", "/b.bin", "/c.bin"}) server.addFile(name, "x");
  server.once("RETR /b.bin", [&](Session& s) {
    server.on("PASS", replies("530 Login incorrect."));
    s.drop();
  });
  const auto results = run();
  EXPECT_TRUE(results.at(0).completed);
  EXPECT_EQ(server.count("PASS"), 3U);
  EXPECT_EQ(results.at(0).failures.count(), 2U) << "the file, and what follows it";
  EXPECT_TRUE(loggedInRed("nothing after this item is backed up: /b.bin"));
}

}  // namespace
}  // namespace quillmoor
