// A run that is "Completed" and counts no failure has copied the whole site: whatever is missing is counted,
// named in the log, and named again at the end.
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

/// A line of a listing; `type` "d" for a folder, "-" for a file.
std::string line(const std::string& type, const std::string& name) {
  return type + "rwxr-xr-x 1 o g 1 Jan  1  2020 " + name + "\r\n";
}

class NothingLostTest : public ::testing::Test, protected RunWorld {
 protected:
  bool loggedInRed(const std::string& text) const {
    return std::any_of(display.lines.begin(), display.lines.end(), [&](const auto& one) {
      return one.colour == Colour{255, 0, 0} && one.text.find(text) != std::string::npos;
    });
  }

  /// The server enters every folder, and lists it by its path; all files are "x".
  void listEverywhere(std::function<std::string(const std::string&)> listing) {
    server.on("CWD", [this](Session& s) {
      serverFolder = s.argument;
      s.reply("250 Here.");
    });
    server.on("PWD", [this](Session& s) { s.reply("257 \"" + serverFolder + "\""); });
    server.on("LIST",
              [=, this](Session& s) { transfers("150 Here.", listing(serverFolder), "226 Done.")(s); });
    server.on("RETR", transfers("150 Here.", "x", "226 Done."));
  }
  std::string serverFolder = "/";

  /// The lines from the profile's count of failures on to "Finished all at:".
  std::vector<std::string> endReport() const {
    std::vector<std::string> lines;
    for (const auto& one : display.lines) {
      if (one.text.starts_with("site: ")) lines.clear();
      if (one.text.starts_with("Finished all at:")) break;
      lines.push_back(one.text);
    }
    return lines;
  }
};

TEST_F(NothingLostTest, WhatFailsIsCountedAndNamed) {
  const std::string kB = line("-", "b.bin");
  const struct {
    const char* name;
    std::function<void()> damage;
    std::size_t failures;
    const char* logged;  // in red, before the end of the run
    const char* named;
  } rows[] = {
      {"nothing", [] {}, 0, "", ""},
      {"all files", [&] { server.on("RETR", replies("550 Forbidden.")); }, 2, "Ftp Error: ", "/sub/b.bin: "},
      {"a folder", [&] { server.on("CWD /sub", replies("550 Forbidden.")); }, 1, "is being walked already",
       "/: "},
      {"the first folder", [&] { server.on("CWD", replies("550 Forbidden.")); }, 2, "Ftp Error: ", "/: "},
      {"a listing", [&] { server.on("LIST", replies("550 Forbidden.")); }, 1, "Ftp Error: ", "/: "},
      {"an empty folder", [&] { server.setListing("/sub", "No files found.\r\n"); }, 0, "", ""},
      {"no known form", [&] { server.setListing("/sub", "Volume full\r\n"); }, 1, "", "/sub: its listing"},
      {"the archive", [&] { stages.fail = true; }, 1, "", "archive: archive site"},
      {"the first folder of the profile", [&] { profile.DefaultDir = "/gone"; }, 1,
       "Error: Unable to enter the first folder: /gone", "/gone: "},
      {"a cut listing",
       [&] {
         server.on("LIST -a",
                   transfers("150 Here.", line("-", "a.bin"), "226 Output truncated to 1 matches"));
       },
       1, "has not listed all of the folder (Output truncated to 1 matches): /", "/: The server has not"},
      {"hidden files for the moment", [&] { server.once("LIST -a", refusesData("451 Try later.")); }, 1,
       "not listed hidden files this time: /", "/: The server"},
      {"a line that nobody can read", [&] { server.setListing("/sub", kB + "-rw-r--r-- 1 o g what\r\n"); }, 1,
       "Error: Unable to read a line of the listing of /sub: -rw-r--r-- 1 o g what",
       "/sub: a line of its listing cannot be read: -rw-r--r-- 1 o g what"},
      {"a short file", [&] { server.on("RETR /sub/b.bin", transfers("150 Here.", "", "226 Done.")); }, 1,
       "Ftp Error: ", "/sub/b.bin: "},
      {"a type that is refused", [&] { server.on("TYPE I", replies("504 Text only.")); }, 2,
       "Error: Received as text (TYPE A), because the server refused TYPE I: /sub/b.bin",
       "/sub/b.bin: Received as text"},
      {"a name of our own", [&] { server.setListing("/sub", kB + line("-", ".quillmoor-unfinished-1.tmp")); },
       1, "Error: Refused name (", ".quillmoor-unfinished-1.tmp: Refused name"},
      {"an empty folder whose copy is not",
       [&] {
         fs::create_directories(target() / "sub");
         writeFile(target() / "sub/b.bin", "b");
         server.setListing("/", "");
         profile.Folders = {"/", "/sub"};
       },
       1, "listing is empty, but its copy holds files: /", "/: "},
      {"brackets in a path",
       [&] {
         server.setListing("/sub", line("d", "photos [2024]"));
         server.addFile("/sub/photos [2024]/c.bin", "c");
         server.addFile("/sub/photos/c.bin", "c");
       },
       1, "Cut to /sub/photos/, which is not where its files are", "/sub/photos [2024]: "},
      {"a folder that cannot be created",
       [&] {
         fs::create_directory(target());
         writeFile(target() / "sub", "a file");
         server.setListing("/sub", line("d", "deep"));
         server.addFolder("/sub/deep");
       },
       1, "Error: Unable to create directory: ", ""},
  };
  const SiteProfile good = profile;
  for (const auto& row : rows) {
    server.forgetRules();
    server.setListing("/", line("d", "sub") + line("-", "a.bin"));
    server.setListing("/sub", kB);
    server.addFile("/a.bin", "a");
    server.addFile("/sub/b.bin", "b");
    profile = good;
    stages.fail = false;
    display = {};
    fs::remove_all(target());
    row.damage();
    const auto results = run();
    EXPECT_TRUE(results.at(0).completed) << row.name;
    EXPECT_EQ(display.item(0, ReportColumn::errors), " - ") << row.name;
    EXPECT_EQ(results.at(0).failures.count(), row.failures) << row.name;
    EXPECT_EQ(results.at(0).failed(), row.failures != 0) << row.name;
    EXPECT_TRUE(*row.logged == '\0' || loggedInRed(row.logged)) << row.name << "\n" << display.log();
    const auto end = endReport();
    if (row.failures == 0) continue;
    const std::string count = row.failures == 1 ? "site: 1 failure\r\n" : "site: 2 failures\r\n";
    EXPECT_TRUE(loggedInRed(count) && end.at(0) == count) << row.name;
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
  listEverywhere([](const std::string&) { return line("d", "again") + line("-", "a"); });
  EXPECT_EQ(run().at(0).failures.count(), 1U);
  EXPECT_TRUE(loggedInRed("as a link to one of them would; it is skipped: /again/again/again"));
  EXPECT_THAT(treeOf(target()), ElementsAre("a", "again/", "again/a", "again/again/", "again/again/a"));
}

TEST_F(NothingLostTest, FoldersThatLinkBackInManyWaysAreWalkedALimitedNumberOfTimes) {
  // Each of four folders has a link to the first one, which the server lists as a folder.
  listEverywhere([](const std::string& here) {
    if (here == "/" || here.ends_with("/up"))
      return line("d", "a") + line("d", "b") + line("d", "c") + line("d", "d");
    return line("d", "up") + line("-", here.substr(here.rfind('/') + 1) + ".txt");
  });
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

TEST_F(NothingLostTest, ARunCleansUpAfterAKilledOne) {
  server.addFile("/www/a.bin", "x");
  fs::create_directories(target() / "www");
  writeFile(target() / "www/.quillmoor-unfinished.tmp", "half a file");
  run();
  EXPECT_THAT(treeOf(target()), ElementsAre("www/", "www/a.bin"));

  for (const char* where : {"", "copies/"}) {
    const fs::path waiting = folder / (where + std::string(".quillmoor-unfinished-old.zip"));
    fs::create_directories(waiting);
    writeFile(waiting / "old.zip", "former");
  }
  settings.ZipCopies = (folder / "copies").string();
  profile.Status = 0;  // for disabled profiles too
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

TEST_F(NothingLostTest, AFolderIsWrittenByOneProfileOfOneRun) {
  server.addFile("/a.bin", "a");
  fs::create_directories(folder / "locked");
  const auto others = TargetLock::acquire((folder / "locked").string());
  const std::pair<const char*, fs::path> profiles[] = {
      {"a", folder.path()}, {"a[x]", folder / "."}, {"b", folder / "a"}, {"locked", folder.path()}};
  for (const auto& [name, saveTo] : profiles) {
    profile.name = name;
    profile.SaveTo = saveTo.string();
    save(profile);
  }
  const auto results = run();
  EXPECT_TRUE(results.at(0).completed);
  for (const std::size_t refused : {1, 2}) {
    EXPECT_THAT(results.at(refused).problem, HasSubstr("written into the same folder: "));
    EXPECT_EQ(display.item(refused, ReportColumn::status), "Failed");
  }
  EXPECT_THAT(results.at(3).problem, HasSubstr("Another backup run is writing into the same folder"));
  EXPECT_THAT(treeOf(folder / "a"), ElementsAre("a.bin", "b/")) << "no lock is left behind";
  EXPECT_EQ(server.count("USER"), 1U);
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

TEST_F(NothingLostTest, WithoutALimitALoginIsTriedUntilItWorks) {
  ticks = 0;
  settings.ConnectionDelay = 7;
  int refusals = 7;
  server.on("PASS", [&](Session& s) { refusals-- > 0 ? s.reply("530 No.") : s.answerAsUsual(); });
  EXPECT_TRUE(run().at(0).completed);
  EXPECT_EQ(display.count("the setting LoginAttempts sets a limit"), 1);
  EXPECT_EQ(display.count("Trying to connect and login through LAN connection.\r\n"), 8);
  EXPECT_EQ(display.count("Waiting 7 Seconds Before Retrying...\r\n"), 7);
  EXPECT_GE(*ticks, 49'000);
}

TEST_F(NothingLostTest, ALoginGivenUpInTheMiddleEndsTheWalk) {
  settings.LoginAttempts = 2;
  for (const char* name : {"/sub/a.bin", "/sub/b.bin", "/c.bin"}) server.addFile(name, "x");
  server.once("RETR /sub/b.bin", [&](Session& s) {
    server.on("PASS", replies("530 Login incorrect."));
    s.drop();
  });
  const auto results = run();
  EXPECT_TRUE(results.at(0).completed);
  EXPECT_EQ(server.count("PASS"), 3U);
  EXPECT_EQ(results.at(0).failures.count(), 2U) << "the file, and what follows it";
  EXPECT_TRUE(loggedInRed("nothing after this item is backed up: /sub/b.bin"));
}

}  // namespace
}  // namespace quillmoor
