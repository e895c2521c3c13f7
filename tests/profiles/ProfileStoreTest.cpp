// The profile file and the profiles in it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "base/LenientNumber.h"
#include "platform/ini/PrivateProfile.h"
#include "platform/system/CodePage.h"
#include "profiles/IniCases.h"
#include "profiles/NameOrder.h"
#include "profiles/SiteProfileStore.h"
#include "profiles/mIni.h"
#include "profiles/mRC4.h"
#include "support/TemporaryFolder.h"

namespace quillmoor {
namespace {

using testing::contentsOf;
using ::testing::ElementsAre;
using testing::TemporaryFolder;
using testing::writeFile;

class ProfileFile : public ::testing::Test {
 protected:
  TemporaryFolder folder;
  std::string file = (folder / "Profiles.ini").string();
};

TEST_F(ProfileFile, IsReadByTheRulesOfTheFormat) {
  for (const auto& c : testing::iniReadCases()) {
    writeFile(file, c.file);
    EXPECT_EQ(GetPrivateProfileString(c.section, c.key, file), c.value) << c.name;
  }
}

TEST_F(ProfileFile, IsWrittenByTheRulesOfTheFormat) {
  for (const auto& c : testing::iniWriteCases()) {
    writeFile(file, c.before);
    EXPECT_TRUE(WritePrivateProfileString(c.section, c.key, c.value, file)) << c.name;
    EXPECT_EQ(contentsOf(file), c.after) << c.name;
    EXPECT_EQ(GetPrivateProfileString(c.section, c.key, file), c.read.value_or(c.value)) << c.name;
  }
}

TEST_F(ProfileFile, ListsAndDeletesSections) {
  writeFile(file, ";c\r\n[b]\r\nk=1\r\n[A]\r\nk=2\r\n[b]\r\nk=3\r\n");
  EXPECT_THAT(mIni::ListSections(file), ElementsAre("b", "A", "b"));
  EXPECT_TRUE(mIni::DeleteSection("a", file));
  EXPECT_EQ(contentsOf(file), ";c\r\n[b]\r\nk=1\r\n[b]\r\nk=3\r\n");
  EXPECT_TRUE(mIni::DeleteSection("missing", file));
  EXPECT_TRUE(mIni::DeleteSection("B", file));
  EXPECT_EQ(contentsOf(file), ";c\r\n[b]\r\nk=3\r\n");
  EXPECT_THAT(mIni::ListSections((folder / "none.ini").string()), ElementsAre());
}

TEST_F(ProfileFile, CannotBeBrokenByAValue) {
  EXPECT_FALSE(mIni::WriteValue("s", "k", "v\r\n[t]", file));
  EXPECT_FALSE(mIni::WriteValue("s]\r\n[t", "k", "v", file));
  EXPECT_FALSE(std::filesystem::exists(file));
  EXPECT_FALSE(mIni::WriteValue("s", "k", "v", (folder / "none" / "x.ini").string()));
}

TEST_F(ProfileFile, KeepsAProfileThroughSavingAndLoading) {
  SiteProfile profile;
  profile.name = "Würzburg";
  profile.Host = "ftp.example.org";
  profile.UserID = "joe";
  profile.Password = "pass wörd €";
  profile.Port = "2121";
  profile.SaveTo = "/backup/";
  profile.ProxyType = 4;
  profile.ProxyPassword = "in clear";
  profile.ManualPort = 1;
  profile.MinData = "5000";
  profile.Folders = {"/www", "/cgi-bin"};
  ASSERT_TRUE(SaveSiteProfile(profile, file, *MakeLocalDateTime({2011, 5, 7, 14, 3, 9, 0})));
  EXPECT_EQ(profile.ID, "20110507140309");
  EXPECT_EQ(
      contentsOf(file),
      "[W\xFCrzburg]\r\nID=20110507140309\r\nStatus=1\r\nHost=ftp.example.org\r\nUserID=joe\r\nPassword=" +
          mRC4::Encipher("pass wörd €") +
          "\r\nPort=2121\r\nAccount=\r\nSaveTo=/backup/\r\nRunURL=\r\nRunProgram=\r\nTimeout=60\r\nPASV=1\r\n"
          "ManualPort=1\r\nMinData=5000\r\nMaxData=\r\nProxyType=4\r\nProxyHost=\r\nProxyPort=\r\n"
          "ProxyUsername=\r\nProxyPassword=in clear\r\nDefaultDir=\r\nFolders=/www~|~/cgi-bin\r\n");

  SiteProfile loaded = LoadSiteProfile("wÜRZBURG", file);
  EXPECT_EQ(loaded.Password, "pass wörd €");
  EXPECT_EQ(loaded.ProxyType, 4);
  EXPECT_THAT(loaded.Folders, ElementsAre("/www", "/cgi-bin"));
  loaded.name = profile.name;
  ASSERT_TRUE(SaveSiteProfile(loaded, file));
  EXPECT_EQ(loaded.ID, "20110507140309") << "for ever";
  EXPECT_TRUE(ProfileExists("WÜRZBURG", file));
  EXPECT_TRUE(DeleteSiteProfile("Würzburg", file));
  EXPECT_FALSE(ProfileExists("Würzburg", file));
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1)
      << "something is left behind";
}

TEST_F(ProfileFile, LoadsWhatOthersHaveWritten) {
  writeFile(file,
            "[p]\nStatus= 1 \nPASV=yes\nManualPort=70000\nProxyType=3 or so\nFolders=/a~|~/b~|~/a~|~/A\n"
            "Password=not Base64\n[q]\n");
  const SiteProfile p = LoadSiteProfile("p", file);
  EXPECT_EQ(p.Status, 1);
  EXPECT_EQ(p.PASV, 0);
  EXPECT_EQ(p.ManualPort, 0);
  EXPECT_EQ(p.ProxyType, 3);
  EXPECT_EQ(p.Port, "") << "a section that has lost a key has none";
  EXPECT_THAT(p.Folders, ElementsAre("/a", "/b", "/A"));
  EXPECT_TRUE(p.passwordUnreadable);
  EXPECT_EQ(p.Password, "");
  EXPECT_TRUE(LoadSiteProfile("q", file).Folders.empty());
  EXPECT_EQ(LoadSiteProfile("", file).Port, "21") << "a new profile";
}

TEST_F(ProfileFile, KeepsValuesThatLookLikeQuotedOnes) {
  for (const char* value : {"\"a\"", "'a'", " a ", "\"a b\" \"c\"", "a\"", "\"", "plain"}) {
    EXPECT_TRUE(mIni::WriteValue("s", "k", value, file));
    EXPECT_EQ(mIni::ReadValue("s", "k", file), value);
  }
}

TEST_F(ProfileFile, LosesNoProfileToTwoSaversAtOnce) {
  const auto saveMany = [this](const std::string& prefix) {
    for (int i = 0; i < 10; ++i) {
      SiteProfile profile;
      profile.name = prefix + std::to_string(i);
      EXPECT_TRUE(SaveSiteProfile(profile, file));
    }
  };
  std::thread other(saveMany, "a");
  saveMany("b");
  other.join();
  EXPECT_EQ(LoadSitesInfo(file).size(), 20U);
}

TEST_F(ProfileFile, DeletesEverySectionOfAName) {
  writeFile(file, "[p]\r\nk=1\r\n[q]\r\n[P]\r\nk=2\r\n");
  EXPECT_TRUE(DeleteSiteProfile(" p", file));
  EXPECT_EQ(contentsOf(file), "[q]\r\n");
}

TEST_F(ProfileFile, CorrectsItsNumbers) {
  const struct {
    const char *port, *timeout, *low, *high;
    std::int16_t manual;
    const char* corrected;
  } cases[] = {{"abc", "10000", "0", "", 0, "21 60 0 "},
               {"65536", "0", "5000", "4000", 1, "21 60 5000 5000"},
               {"2121", "9999", "0", "70000", 1, "2121 9999 1 1"},
               {"1", "1", "5", "6", 1, "1 1 5 6"}};
  for (const auto& c : cases) {
    SiteProfile p;
    p.Port = c.port;
    p.Timeout = c.timeout;
    p.MinData = c.low;
    p.MaxData = c.high;
    p.ManualPort = c.manual;
    CorrectNumbers(p);
    EXPECT_EQ(p.Port + " " + p.Timeout + " " + p.MinData + " " + p.MaxData, c.corrected);
  }
}

TEST_F(ProfileFile, SortsNamesWithoutRegardToCase) {
  writeFile(file, "[b]\r\n[2]\r\n[Ä]\r\n[10]\r\n[B]\r\n[a]\r\n");
  EXPECT_THAT(LoadSitesInfo(file), ::testing::SizeIs(6));
  EXPECT_EQ(LoadSitesInfo(file)[0] + LoadSitesInfo(file)[1], "102");
  std::vector<std::string> names = {"b", "A", "B", "a"};
  SortNames(names);
  EXPECT_THAT(names, ElementsAre("A", "a", "b", "B")) << "equal names keep their order";
}

TEST(CodePage, GoesThereAndBack) {
  std::string every;
  for (int byte = 1; byte < 256; ++byte) every += static_cast<char>(byte);
  EXPECT_EQ(ToAnsi(FromAnsi(every)), every);
  EXPECT_EQ(ToAnsi("€ ü"), "\x80 \xFC");
  EXPECT_EQ(ToAnsi("日本"), "??");
  EXPECT_EQ(ToAnsi("\xFF\xE4x\xC3"), "\xFF\xE4x\xC3") << "bytes that are no UTF-8 pass";
}

TEST(LenientNumber, TakesWhatLeadsTheText) {
  const struct {
    const char* text;
    double value;
  } cases[] = {{"21", 21}, {"abc", 0},   {"", 0},     {" 6 0 s", 60}, {"-5x", -5},
               {"+7", 7},  {"1.5", 1.5}, {".5", 0.5}, {"1e3", 1000},  {"1e", 1},
               {"inf", 0}, {"nan", 0},   {"0x10", 0}, {"--1", 0},     {"99999999999", 99999999999.0}};
  for (const auto& c : cases) EXPECT_EQ(Val(c.text), c.value) << c.text;
  EXPECT_EQ(ToLong(2.5), 2);
  EXPECT_EQ(ToLong(3.5), 4);
  EXPECT_THROW(ToLong("99999999999"), std::overflow_error);
  EXPECT_THROW(ToLong("1e999"), std::overflow_error);
  EXPECT_THROW(ToInteger(32768), std::overflow_error);
  EXPECT_EQ(MultiplyLong(30, 1000), 30000);
  EXPECT_THROW(MultiplyLong(2147484, 1000), std::overflow_error);
}

}  // namespace
}  // namespace quillmoor
