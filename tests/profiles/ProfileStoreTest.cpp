// The profile file: its format, the profiles in it, and the cipher of their passwords.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <thread>

#include "base/LenientNumber.h"
#include "platform/ini/PrivateProfile.h"
#include "platform/system/CodePage.h"
#include "profiles/SiteProfileStore.h"
#include "profiles/mBase64.h"
#include "profiles/mIni.h"
#include "profiles/mRC4.h"
#include "support/TemporaryFolder.h"

namespace quillmoor {
namespace {

using testing::contentsOf;
using ::testing::ElementsAre;
using testing::writeFile;

class ProfileFile : public ::testing::Test {
 protected:
  testing::TemporaryFolder folder;
  std::string file = (folder / "Profiles.ini").string();
};

TEST_F(ProfileFile, IsReadByTheRulesOfTheFormat) {
  const struct {
    const char* name;
    std::string contents;
    const char *section, *key;
    std::string value;
  } cases[] = {
      {"line feeds alone", "[s]\nk=v\n", "s", "k", "v"},
      {"another case", "[SeCtion]\r\nKEY=v\r\n", "sECTION", "key", "v"},
      {"blanks around", "  [ s ]  \r\n  k  =  v  \r\n", "s", "k", "v"},
      {"double quotes", "[s]\r\nk=\"  v \"\r\n", "s", "k", "  v "},
      {"single quotes", "[s]\r\nk='v'\r\n", "s", "k", "v"},
      {"unequal quotes", "[s]\r\nk=\"v'\r\n", "s", "k", "\"v'"},
      {"a lone quote", "[s]\r\nk=\"\r\n", "s", "k", "\""},
      {"special characters in the value", "[s]\r\nk=a=b;=\r\n", "s", "k", "a=b;="},
      {"comment", "[s]\r\n;k=no\r\nk=v\r\n", "s", "k", "v"},
      {"only the first section of two", "[s]\r\nk=1\r\n[s]\r\nj=3\r\n", "s", "j", ""},
      {"keys before any section", "k=1\r\n[s]\r\nj=2\r\n", "s", "k", ""},
      {"bracket in the name", "[a]b]\r\nk=v\r\n", "a]b", "k", "v"},
      {"missing section", "[s]\r\nk=v\r\n", "t", "k", ""},
      {"a bracket as the second byte", "[\x83\x5D\x81\x5B]\r\nk=v\r\n", "\x83\x5D\x81\x5B", "k", "v"},
      {"longer than the buffer", "[s]\r\nk=" + std::string(150'000, 'x') + "\r\n", "s", "k",
       std::string(99'999, 'x')},
      {"after a long value", "[s]\r\nk=" + std::string(150'000, 'x') + "\r\nj=v\r\n", "s", "j", "v"},
  };
  for (const auto& c : cases) {
    writeFile(file, c.contents);
    EXPECT_EQ(GetPrivateProfileString(c.section, c.key, file), c.value) << c.name;
  }
}

TEST_F(ProfileFile, IsWrittenByTheRulesOfTheFormat) {
  const struct {
    const char* name;
    std::string before;
    const char *section, *key;
    std::string value;
    std::string after;
    std::optional<std::string> read = std::nullopt;  // what a read returns, where it is not the value
  } cases[] = {
      {"another section", "[s]\r\nk=1\r\n", "t", "j", "2", "[s]\r\nk=1\r\n[t]\r\nj=2\r\n"},
      {"into the middle", "[s]\r\nk=1\r\n[t]\r\nj=2\r\n", "s", "l", "3",
       "[s]\r\nk=1\r\nl=3\r\n[t]\r\nj=2\r\n"},
      {"after a missing line end", "[s]\r\nk=1", "s", "j", "2", "[s]\r\nk=1\r\nj=2\r\n"},
      {"comments stay", ";c\r\n[s]\r\n;d\r\nk=1\r\n", "s", "k", "2", ";c\r\n[s]\r\n;d\r\nk=2\r\n"},
      {"the first of two sections", "[s]\r\nk=1\r\n[s]\r\nk=2\r\n", "s", "k", "3",
       "[s]\r\nk=3\r\n[s]\r\nk=2\r\n"},
      {"the first of two keys", "[s]\r\nk=1\r\nk=2\r\n", "s", "k", "3", "[s]\r\nk=3\r\nk=2\r\n"},
      {"a key in another case", "[S]\r\n Key = 1\r\n", "s", "kEY", "2", "[S]\r\nKey=2\r\n"},
      {"the same value", "[s]\r\n k = v \r\n", "s", "K", "v", "[s]\r\n k = v \r\n"},
      {"the same value in quotes", "[s]\r\nk=\"v\"\r\n", "s", "k", "v", "[s]\r\nk=v\r\n"},
      {"double quotes", "", "s", "k", "\"v\"", "[s]\r\nk=\"v\"\r\n", "v"},
      {"quoted blanks", "", "s", "k", "\" v \"", "[s]\r\nk=\" v \"\r\n", " v "},
      {"blanks alone", "", "s", "k", "  ", "[s]\r\nk=\r\n", ""},
      {"blanks around", "", "s", "k", " \tv ", "[s]\r\nk=v \r\n", "v"},
  };
  for (const auto& c : cases) {
    writeFile(file, c.before);
    EXPECT_TRUE(WritePrivateProfileString(c.section, c.key, c.value, file)) << c.name;
    EXPECT_EQ(contentsOf(file), c.after) << c.name;
    EXPECT_EQ(GetPrivateProfileString(c.section, c.key, file), c.read.value_or(c.value)) << c.name;
  }
}

TEST_F(ProfileFile, ListsAndDeletesSections) {
  writeFile(file, ";c\r\n[b]\r\nk=1\r\n[A]\r\nk=2\r\n[b]\r\nk=3\r\n");
  EXPECT_THAT(mIni::ListSections(file), ElementsAre("b", "A", "b"));
  for (const char* const section : {"a", "missing", "B"}) EXPECT_TRUE(mIni::DeleteSection(section, file));
  EXPECT_EQ(contentsOf(file), ";c\r\n[b]\r\nk=3\r\n");
  EXPECT_THAT(mIni::ListSections((folder / "none.ini").string()), ElementsAre());
}

TEST_F(ProfileFile, ReturnsEveryValueItTakes) {
  for (const char* value : {"\"a\"", "'a'", " a ", "\"a b\" \"c\"", "a\"", "\"", "plain"}) {
    EXPECT_TRUE(mIni::WriteValue("s", "k", value, file));
    EXPECT_EQ(mIni::ReadValue("s", "k", file), value);
  }
  EXPECT_FALSE(mIni::WriteValue("s", "k", "v\r\n[t]", file));
  EXPECT_FALSE(mIni::WriteValue("s]\r\n[t", "k", "v", file));
  EXPECT_EQ(contentsOf(file), "[s]\r\nk=plain\r\n");
  EXPECT_FALSE(mIni::WriteValue("s", "k", "v", (folder / "none" / "x.ini").string()));
}

TEST_F(ProfileFile, KeepsAProfileThroughSavingAndLoading) {
  SiteProfile profile{.name = "Würzburg",
                      .ID = "",
                      .Status = 0,
                      .Host = "ftp.example.org",
                      .UserID = "joe",
                      .Password = "pass wörd €",
                      .Port = "2121",
                      .Account = "account",
                      .SaveTo = "/backup/",
                      .RunURL = "url",
                      .RunProgram = "program",
                      .Timeout = "61",
                      .ManualPort = 1,
                      .MinData = "5000",
                      .MaxData = "5001",
                      .ProxyType = 4,
                      .ProxyHost = "proxy",
                      .ProxyPort = "1080",
                      .ProxyUsername = "jim",
                      .ProxyPassword = "in clear",
                      .DefaultDir = "/pub",
                      .Folders = {"/www", "/cgi-bin"},
                      .Security = 2,
                      .Certificate = "ab12"};
  ASSERT_TRUE(SaveSiteProfile(profile, file, *MakeLocalDateTime({2011, 5, 7, 14, 3, 9, 0})));
  const std::string written = contentsOf(file);
  EXPECT_EQ(
      written,
      "[W\xFCrzburg]\r\nID=20110507140309\r\nStatus=0\r\nHost=ftp.example.org\r\nUserID=joe\r\nPassword=" +
          mRC4::Encipher("pass wörd €") +
          "\r\nPort=2121\r\nAccount=account\r\nSaveTo=/backup/\r\nRunURL=url\r\nRunProgram=program\r\n"
          "Timeout=61\r\nPASV=1\r\nManualPort=1\r\nMinData=5000\r\nMaxData=5001\r\nProxyType=4\r\nProxyHost="
          "proxy\r\n"
          "ProxyPort=1080\r\nProxyUsername=jim\r\nProxyPassword=in clear\r\nDefaultDir=/pub\r\n"
          "Folders=/www~|~/cgi-bin\r\nSecurity=2\r\nCertificate=ab12\r\n");
  SiteProfile loaded = LoadSiteProfile("wÜRZBURG", file);
  loaded.name = profile.name;
  ASSERT_TRUE(SaveSiteProfile(loaded, file));
  EXPECT_EQ(contentsOf(file), written) << "the ID stays for ever";
  EXPECT_TRUE(DeleteSiteProfile("WÜRZBURG", file));
  EXPECT_FALSE(ProfileExists("Würzburg", file));
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1)
      << "a file is left behind";
}

TEST_F(ProfileFile, LoadsWhatOthersHaveWritten) {
  writeFile(file,
            "[p]\nStatus= 1 \nPASV=yes\nManualPort=70000\nProxyType=3 or so\nFolders=/a~|~/b~|~/a~|~/A\n"
            "Password=not Base64\n[q]\nPASV=99999999999\n");
  const SiteProfile p = LoadSiteProfile("p", file);
  EXPECT_EQ(p.Status * 1000 + p.PASV * 100 + p.ManualPort * 10 + p.ProxyType, 1003);
  EXPECT_EQ(p.Port, "") << "a missing key is no default";
  EXPECT_THAT(p.Folders, ElementsAre("/a", "/b", "/A"));
  EXPECT_TRUE(p.passwordUnreadable);
  EXPECT_TRUE(LoadSiteProfile("q", file).Folders.empty());
  EXPECT_EQ(LoadProfileForRun("q", file).numberTooLarge, "PASV");
  EXPECT_EQ(LoadSiteProfile("", file).Port, "21") << "a new profile";
}

TEST_F(ProfileFile, WritesALaterFieldOnlyWhereItDiffersFromItsDefault) {
  const ProfileField later{.key = "Tls",
                           .member = &SiteProfile::PASV,
                           .kind = ProfileField::Kind::number,
                           .hint = "",
                           .since = ProfileField::Since::later};
  SiteProfile profile;
  EXPECT_EQ(StoredText(profile, later), std::nullopt);
  for (const auto& [stored, number] : {std::pair("0", 0), std::pair("2", 2), std::pair("", 2)}) {
    TakeStored(profile, later, stored);
    EXPECT_EQ(profile.PASV, number) << "a missing key changes nothing";
    EXPECT_EQ(StoredText(profile, later), std::to_string(number));
  }
}

TEST_F(ProfileFile, LosesNoProfileToConcurrentSaves) {
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
  const auto corrected = [](bool manual, const char* port, const char* timeout, const char* low,
                            const char* high) {
    SiteProfile p;
    p.ManualPort = manual;
    p.Port = port;
    p.Timeout = timeout;
    p.MinData = low;
    p.MaxData = high;
    CorrectNumbers(p);
    return p.Port + " " + p.Timeout + " " + p.MinData + " " + p.MaxData;
  };
  EXPECT_EQ(corrected(false, "abc", "10000", "0", ""), "21 60 0 ");
  EXPECT_EQ(corrected(true, "65536", "0", "5000", "4000"), "21 60 5000 5000");
  EXPECT_EQ(corrected(true, "65535", "9999", "0", "70000"), "65535 9999 1 1");
  EXPECT_EQ(corrected(true, "1", "1", "5", "6"), "1 1 5 6");
}

TEST_F(ProfileFile, SortsNamesWithoutRegardToCase) {
  writeFile(file, "[b]\r\n[2]\r\n[A]\r\n[]\r\n[10]\r\n[B]\r\n[a]\r\n");
  EXPECT_THAT(LoadSitesInfo(file), ElementsAre("10", "2", "A", "a", "b", "B"));
}

// Computed by another RC4 and Base64 from the same key.
constexpr struct {
  const char* plain;
  const char* stored;
} kStored[] = {
    {"", ""},
    {"a", "Hw=="},
    {"ab", "H8o="},
    {"abc", "H8o4"},
    {"Straße €", "LdwpJ4y12Kw="},
    {"xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx",
     "BtAjPiuogFRsGl8/exCpQvYyEzUodQT7u/4GLaV+tzdJvWP5WzH+0TWAZ4QGkt5z9yHPRGztLEujwH1N"},
};

TEST(PasswordCipher, WritesWhatOtherProgramsOfItsKindRead) {
  for (const auto& c : kStored) {
    EXPECT_EQ(mRC4::Encipher(c.plain), c.stored);
    EXPECT_EQ(mRC4::Decipher(c.stored), c.plain);
  }
}

TEST(Base64, RejectsForeignCharactersAndIgnoresAnIncompleteGroup) {
  EXPECT_EQ(mBase64::Decode("Zm9vZm9"), "foo");
  for (const char* text : {"Zm9 ", "Zm9v\r\n", "Zm-v", "\xC3\xA4q8d", "Zm9vx!"})
    EXPECT_THROW(mBase64::Decode(text), mBase64::DecodeError) << text;
}

TEST(CodePage, ConvertsBothWays) {
  std::string every;
  for (int byte = 1; byte < 256; ++byte) every += static_cast<char>(byte);
  EXPECT_EQ(ToAnsi(FromAnsi(every)), every);
  EXPECT_EQ(ToAnsi("€ ü"), "\x80 \xFC");
  EXPECT_EQ(ToAnsi("日本"), "??");
  EXPECT_EQ(ToAnsi("\xFF\xE4x\xC3"), "\xFF\xE4x\xC3") << "bytes that are no UTF-8 pass";
}

TEST(LenientNumber, ReadsTheLeadingNumber) {
  const std::pair<const char*, double> cases[] = {{"21", 21},    {"abc", 0},
                                                  {"", 0},       {" 6 0 s", 60},
                                                  {"-5x", -5},   {"+7", 7},
                                                  {"1.5", 1.5},  {".5", 0.5},
                                                  {"1e3", 1000}, {"1e", 1},
                                                  {"inf", 0},    {"0x10", 0},
                                                  {"--1", 0},    {"99999999999", 99999999999.0}};
  for (const auto& [text, value] : cases) EXPECT_EQ(Val(text), value) << text;
  EXPECT_EQ(ToLong(2.5), 2);
  EXPECT_EQ(ToLong(3.5), 4);
  EXPECT_THROW(ToLong("1e999"), std::overflow_error);
  EXPECT_THROW(ToInteger(32768), std::overflow_error);
  EXPECT_THROW(MultiplyLong(2147484, 1000), std::overflow_error);
}

}  // namespace
}  // namespace quillmoor
