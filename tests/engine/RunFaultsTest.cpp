// Backup runs whose server, or what it lists, is not as it should be.
#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

#include "engine/RunWorld.h"
#include "platform/files/LocalPath.h"
#include "profiles/mIni.h"

namespace quillmoor {
namespace {

using namespace testing;  // of this project
using ::testing::ElementsAre;
using Session = testing::ScriptedFtpServer::Session;
namespace fs = std::filesystem;

class RunFaultsTest : public ::testing::Test, protected RunWorld {};

TEST_F(RunFaultsTest, RetriesAFileAndGoesOnWithTheNext) {
  settings.FtpRetryCount = 3;
  server.addFile("/a.bin", "a");
  server.addFile("/b.bin", "b");
  int failures = 2;
  server.on("RETR /a.bin", [&](Session& s) {
    if (failures-- <= 0) return s.answerAsUsual();
    s.closeDataPort();
    s.reply("450 Busy.");
  });
  server.on("RETR /b.bin", refusesData("550 Forbidden."));
  server.addFile("/c.bin", "c");
  EXPECT_TRUE(run().at(0).completed);
  EXPECT_THAT(treeOf(target()), ElementsAre("a.bin", "c.bin"));
  EXPECT_EQ(server.count("RETR /a.bin"), 3U);
  EXPECT_EQ(server.count("RETR /b.bin"), 3U);
  EXPECT_EQ(display.count("Ftp Error: 550 Forbidden.\r\n"), 3);
}

TEST_F(RunFaultsTest, MakesOneAttemptAtLeastAndOneMoreThanCanBeCounted) {
  for (const std::int32_t attempts : {std::numeric_limits<std::int32_t>::max(), 0}) {
    settings.FtpRetryCount = attempts;
    server.addFile("/a.bin", std::to_string(attempts));
    server.once("TYPE I", drops());  // which is no attempt at the file
    run();
    EXPECT_EQ(contentsOf(target() / "a.bin"), std::to_string(attempts));
  }
}

TEST_F(RunFaultsTest, CountsAttemptsAcrossLostConnections) {
  settings.FtpRetryCount = 3;
  server.addFile("/a.bin", "a");
  server.on("RETR", drops());
  EXPECT_TRUE(run().at(0).completed);
  EXPECT_EQ(server.count("RETR"), 3U);
}

TEST_F(RunFaultsTest, DoesNotStartWhatWouldNeverEnd) {
  const SiteProfile good = profile;
  const struct {
    const char* told;
    std::function<void()> damage;
  } rows[] = {{"Timeout is too large", [&] { profile.Timeout = "2147484"; }},
              {"The host is missing", [&] { profile.Host = ""; }},
              {"0 is not a valid port number", [&] { profile.Port = ""; }},
              {"65536 is not a valid port number", [&] { profile.Port = "65536"; }},
              {"Unknown proxy type 8", [&] { profile.ProxyType = 8; }},
              {"The proxy's host is missing", [&] { profile.ProxyType = 7; }},
              {"0 is not a valid port number for the proxy", [&] {
                 profile.ProxyType = 2;
                 profile.ProxyHost = "127.0.0.1";
               }}};
  std::size_t report = 0;
  for (const auto& row : rows) {
    profile = good;
    row.damage();
    EXPECT_FALSE(run().at(0).completed) << row.told;
    EXPECT_TRUE(display.logged(row.told)) << row.told;
    EXPECT_EQ(display.item(report, ReportColumn::status), "Failed");
    EXPECT_NE(display.item(report, ReportColumn::finished), " - ");
    ++report;
  }
  profile = good;
  save(profile);
  mIni::WriteValue("site", "Password", "no Base64", profilesFile());
  profile.name.clear();  // saved already
  EXPECT_THAT(run().at(0).problem, ::testing::HasSubstr("password cannot be deciphered"));
  EXPECT_EQ(server.count("USER"), 0U);
}

TEST_F(RunFaultsTest, SurvivesTheLossOfTheConnectionAnywhere) {
  const struct {
    const char* name;
    const char* command;
    std::function<void(Session&)> action;
  } cases[] = {
      {"idle", "TYPE A", drops()},
      {"entering a folder", "CWD /www", drops()},
      {"asking where it is", "PWD", drops()},
      {"in the middle of a listing", "LIST",
       transfers("150 Here.", "-rw-r--r-- 1 o g 1 Jan 1 2020 half a li", "")},
      {"before a file", "TYPE I", drops()},
      {"in the middle of a file", "RETR", transfers("150 Here (4 bytes).", "ha", "")},
      {"told so", "RETR", refusesData("421 Restarting.")},
  };
  profile.Folders = {"/www"};
  server.addFile("/unselected.bin", "x");
  server.addFile("/www/a.bin", "whole");
  server.addFile("/www/deep/b.bin", "whole");
  for (const auto& c : cases) {
    fs::remove_all(target());
    display = {};
    server.once(c.command, c.action);
    EXPECT_TRUE(run().at(0).completed) << c.name;
    EXPECT_THAT(treeOf(target()), ElementsAre("www/", "www/a.bin", "www/deep/", "www/deep/b.bin")) << c.name;
    for (const char* file : {"www/a.bin", "www/deep/b.bin"}) {
      EXPECT_EQ(contentsOf(target() / file), "whole") << c.name;
    }
    EXPECT_EQ(display.count("Connected to: "), 2) << c.name;
  }
}

TEST_F(RunFaultsTest, NothingThatAServerListsLeavesTheTargetFolder) {
  using namespace std::string_literals;
  std::string listing;
  for (const std::string& name : {"../up.bin"s, ".."s, "/etc/abs.bin"s, "nul\0in.bin"s, "c\rr.bin"s,
                                  "esc\x1b[31m.bin"s, "C:drive.bin"s, "back\\slash.bin"s, "good.bin"s}) {
    listing += "-rw-r--r-- 1 o g 1 Jan  1  2020 " + name + "\r\n";
  }
  for (const char* name : {"../outside", "a/b"}) {
    listing += "drwxr-xr-x 1 o g 1 Jan  1  2020 "s + name + "\r\n";
  }
  server.setListing("/", listing);
  server.addFile("/good.bin", "x");
  server.addFile("/C:drive.bin", "x");
  server.addFile("/back\\slash.bin", "x");
  EXPECT_TRUE(run().at(0).completed);
  if (kLocalNameRules == LocalNameRules::windows) {
    EXPECT_THAT(treeOf(target()), ElementsAre("good.bin"));
    EXPECT_EQ(display.count("Error: Refused name"), 9);
  } else {
    // Where a colon or a backslash is an ordinary character the file is kept under its name.
    EXPECT_THAT(treeOf(target()), ElementsAre("C:drive.bin", "back\\slash.bin", "good.bin"));
    EXPECT_EQ(display.count("Error: Refused name"), 7);
  }
  EXPECT_THAT(treeOf(folder.path()), ::testing::SizeIs(treeOf(target()).size() + 2))
      << "nothing but the target, its files, and the profiles";
  EXPECT_FALSE(display.logged("\x1b"));
}

TEST_F(RunFaultsTest, KeepsNamesApartThatDifferInCase) {
  const bool caseCounts = kLocalNameRules == LocalNameRules::posix;
  server.addFile("/README", "one");
  server.addFile("/readme", "two!");
  server.addFile("/Readme/below.bin", "x");
  EXPECT_TRUE(run().at(0).completed);
  // A folder comes first in the listing; what would have to share its name is told and left out.
  EXPECT_EQ(display.count("Error: Refused name"), caseCounts ? 0 : 2);
  EXPECT_EQ(contentsOf(target() / "Readme/below.bin"), "x");
  if (caseCounts) {
    EXPECT_EQ(contentsOf(target() / "README") + contentsOf(target() / "readme"), "onetwo!");
  }
}

TEST_F(RunFaultsTest, NoFolderThatAServerReportsLeavesTheTargetFolder) {
  for (const char* path : {"/../../outside", "/a/../..", "/a\x1b[2J", "/.[x].", "/.. "}) {
    server.on("PWD", [=](Session& s) { s.reply(std::string("257 \"") + path + "\" is where you are."); });
    EXPECT_TRUE(run().at(0).completed);
    EXPECT_THAT(treeOf(folder.path()), ElementsAre("Profiles.ini"));
  }
  EXPECT_EQ(display.count("Error: Refused folder"), 5);
}

TEST_F(RunFaultsTest, AProfileWhoseNameIsNoFolderNameIsNotRun) {
  for (const char* name : {"a/../../b", "..", ".[x]."}) {
    fs::remove(profilesFile());
    profile.name = name;
    EXPECT_FALSE(run().at(0).completed) << name;
    EXPECT_THAT(treeOf(folder.path()), ElementsAre("Profiles.ini")) << name;
  }
  EXPECT_EQ(display.count("Error: The profile's name cannot be the name of a folder"), 3);
}

TEST_F(RunFaultsTest, AFolderThatCannotBeEnteredIsReplacedByTheOneTheSessionIsIn) {
  server.addFile("/here/a.bin", "x");
  profile.DefaultDir = "/here";
  profile.Folders = {"/nowhere"};
  EXPECT_TRUE(run().at(0).completed);
  EXPECT_THAT(treeOf(target()), ElementsAre("here/", "here/a.bin"));
}

TEST_F(RunFaultsTest, AListingInNeitherStyleIsPassedOverInSilence) {
  server.setListing("/", "Volume in drive C is SYSTEM\r\nThere is nothing here for you\r\n");
  EXPECT_TRUE(run().at(0).completed);
  EXPECT_THAT(treeOf(target()), ElementsAre());
  EXPECT_FALSE(display.logged("Error"));
}

TEST_F(RunFaultsTest, AFolderThatCannotBeMadeIsOneLineInTheLog) {
  server.addFile("/blocked/deep/a.bin", "x");
  server.addFile("/fine/b.bin", "x");
  fs::create_directories(target());
  writeFile(target() / "blocked", "a file in the way of a folder");
  EXPECT_TRUE(run().at(0).completed);
  EXPECT_EQ(display.count("Error: Unable to create directory: " +
                          LocalPathText((target() / "blocked/deep/").make_preferred())),
            1);
  EXPECT_EQ(contentsOf(target() / "fine/b.bin"), "x");
  EXPECT_EQ(contentsOf(target() / "blocked"), "a file in the way of a folder");
}

TEST_F(RunFaultsTest, RemovesWhatAKilledRunLeftUnfinished) {
  server.addFile("/www/a.bin", "x");
  fs::create_directories(target() / "www");
  writeFile(target() / "www" / ".quillmoor-unfinished.tmp", "half a file");
  run();
  EXPECT_THAT(treeOf(target()), ElementsAre("www/", "www/a.bin"));
}

TEST_F(RunFaultsTest, AProgrammingErrorIsAFailureOfTheRunWhichGoesOn) {
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
