// The engine's small rules: paths, names, texts, the log, the transfer type, advice on a refused login.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <set>
#include <string>
#include <vector>

#include "TestPlatform.h"
#include "base/Utf8.h"
#include "browser/BrowserRow.h"
#include "console/ConsoleDisplay.h"
#include "engine/FtpAdvice.h"
#include "engine/FtpConnection.h"
#include "engine/LogText.h"
#include "engine/RunLog.h"
#include "engine/RunWorld.h"
#include "engine/SafeName.h"
#include "engine/ShownText.h"
#include "engine/TransferType.h"
#include "engine/mCreatePath.h"
#include "engine/mGeneral.h"
#include "platform/ftp/FtpReply.h"
#include "profiles/SettingsStore.h"
#include "profiles/SiteProfileEditor.h"

namespace quillmoor {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using namespace std::string_literals;

TEST(LocalPaths, EndInASeparator) {
  const struct {
    const char* path;
    bool remote;
    char local;
    const char* result;
  } cases[] = {
      {"/www", true, '\\', "/www/"},     {"/www/", true, '\\', "/www/"},      {"", true, '\\', "/"},
      {"C:\\a", false, '\\', "C:\\a\\"}, {"C:\\a\\", false, '\\', "C:\\a\\"}, {"/a", false, '/', "/a/"},
      {"  /a b  ", true, '\\', "/a b/"}, {"/a[1]b", true, '\\', "/ab/"},      {"/a [x] ", true, '\\', "/a/"},
      {"/a]b[c", true, '\\', "/a]b[c/"}, {"/a[b", true, '\\', "/a[b/"},       {"/a\\", false, '/', "/a\\/"},
  };
  for (const auto& c : cases) EXPECT_EQ(AddTrailingSeparator(c.path, c.remote, c.local), c.result) << c.path;
}

TEST(LocalPaths, MirrorRemoteOnesInsideTheTarget) {
  constexpr auto kCut = FolderNames::cut, kAsListed = FolderNames::asListed;
  constexpr auto kPosix = LocalNameRules::posix, kWindows = LocalNameRules::windows;
  const struct {
    FolderNames names;
    LocalNameRules rules;
    const char *target, *currentDir;
    std::string folder;  // empty: refused
  } cases[] = {
      {kCut, kWindows, "C:\\backup\\site", "/www/img", "C:\\backup\\site\\www\\img\\"},
      {kCut, kWindows, "C:\\backup\\site", "www", "C:\\backup\\site\\www\\"},
      {kCut, kWindows, "\\\\server\\share", "/www", "\\server\\share\\www\\"},
      {kCut, kWindows, "C:\\backup", "/C[x]ON", ""},
      {kCut, kWindows, "C:\\backup", "/a\\..\\b", ""},
      {kCut, kPosix, "/backup/site", "/odd\\name", "/backup/site/odd\\name/"},
      {kCut, kPosix, "/backup/site", "///www", "/backup/site//www/"},
      {kCut, kPosix, "/backup/site", "/a[1]/b", "/backup/site/a/b/"},
      {kCut, kPosix, "/backup/[old] [x] site", "/a]b", "/backup/  site/a]b/"},
      {kCut, kPosix, "/backup/site", "/a/..  ", ""},
      {kCut, kPosix, "/backup/site", "/.[x].", ""},
      {kCut, kPosix, "/backup/site", "/.[a/b]./c", ""},
      {kCut, kPosix, "/backup/[site", "/a]../c", ""},
      {kAsListed, kWindows, "\\\\nas\\backup", "/www [1]", "\\\\nas\\backup\\www [1]\\"},
      {kAsListed, kWindows, " \\\\nas\\\\backup\\", "/www", "\\\\nas\\backup\\www\\"},
      {kAsListed, kWindows, "\\\\nas\\share", "/a ", ""},
      {kAsListed, kPosix, "/backup/[x] site", "/photos [2024]/ a ", "/backup/[x] site/photos [2024]/ a /"},
      {kAsListed, kPosix, "//backup", "/www", "/backup/www/"},
      {kAsListed, kPosix, "/backup/[site", "/a]../c", "/backup/[site/a]../c/"},
      {kAsListed, kPosix, "/backup/site", "/.[x].", "/backup/site/.[x]./"},
      {kAsListed, kPosix, "/backup/site", "/a/..", ""},
  };
  for (const auto& c : cases) {
    const bool refused = c.folder.empty();
    EXPECT_EQ(LocalFolderRefusal(c.target, c.currentDir, c.rules, c.names).has_value(), refused)
        << c.currentDir;
    const char separator = c.rules == kWindows ? '\\' : '/';
    EXPECT_EQ(refused ? "" : LocalFolderFor(c.target, c.currentDir, separator, c.names), c.folder);
    // The path alone decides, unless the target leaves a bracket open.
    const bool bracket = std::string_view(c.target).find('[') != std::string_view::npos;
    EXPECT_EQ(bracket ? refused : RemotePathRefusal(c.currentDir, c.rules, c.names).has_value(), refused)
        << c.currentDir;
  }
  EXPECT_EQ(AddTrailingSeparator(" /a [b] ", true, '/', kAsListed), " /a [b] /");
}

TEST(LocalPaths, AreCreatedLevelByLevel) {
  const struct {
    const char* path;
    std::set<std::string> there, unwilling;
    bool result;
    std::vector<std::string> created;
    char separator = '\\';
  } cases[] = {
      {"", {}, {}, false, {}},
      {"C:\\a\\\\b\\", {}, {}, true, {"C:\\a", "C:\\a\\b"}},
      {"C:\\a\\b\\c", {}, {"C:\\a\\b"}, false, {"C:\\a"}},
      {"\\\\server\\share\\x", {"\\\\server\\share"}, {}, true, {"\\\\server\\share\\x"}},
      // Below a level that was missing nothing is looked up.
      {"C:\\a\\b", {"C:\\a\\b\\"}, {}, true, {"C:\\a", "C:\\a\\b"}},
      // Two slashes are no network path.
      {"//srv//site", {}, {}, true, {"/srv", "/srv/site"}, '/'},
  };
  for (const auto& c : cases) {
    std::vector<std::string> created;
    const FolderSystem system{[&](const std::string& path) { return c.there.contains(path); },
                              [&](const std::string& path) {
                                if (c.unwilling.contains(path)) return false;
                                created.push_back(path);
                                return true;
                              }};
    EXPECT_EQ(CreatePath(c.path, c.separator, system), c.result) << c.path;
    EXPECT_EQ(created, c.created) << c.path;
  }
}

TEST(SafeName, RefusesWhatCouldLeadOutOfAFolder) {
  for (const std::string& name :
       {""s, "."s, ".."s, "a/b"s, "/"s, "a\0b"s, "a\nb"s, "\x1b[2J"s, "a\x7f"s, ".quillmoor-unfinished.tmp"s,
        ".Quillmoor-unfinished-site.zip"s, ".QUILLMOOR-LOCK"s}) {
    EXPECT_TRUE(ListedNameRefusal(name, LocalNameRules::posix)) << name;
    EXPECT_TRUE(ListedNameRefusal(name, LocalNameRules::windows)) << name;
  }
  for (const char* name : {"a\\b", "C:", "a:stream", "CON", "con.txt", "Nul", "nul .x", "COM1", "lpt9.log",
                           "CONIN$", "a.", "a ", "a<b", "a|b", "a?", "a*", "\"a\""}) {
    EXPECT_FALSE(ListedNameRefusal(name, LocalNameRules::posix)) << name;
    EXPECT_TRUE(ListedNameRefusal(name, LocalNameRules::windows)) << name;
  }
  EXPECT_TRUE(ListedNameRefusal("lpt\u00B2.txt", LocalNameRules::windows));
  for (const char* name : {".htaccess", ".quillmoor", "...", "..a", "a b", "grüße", "COM", "COM0", "CONSOLE",
                           "a.con", "[x]", "~"}) {
    EXPECT_FALSE(ListedNameRefusal(name, LocalNameRules::posix)) << name;
    const bool endsInDot = std::string(name).ends_with('.');
    EXPECT_EQ(ListedNameRefusal(name, LocalNameRules::windows).has_value(), endsInDot) << name;
  }
  for (const char* path : {"/..", "/a/../b", "..", "/a/./b", "/a\n"})
    EXPECT_TRUE(RemotePathRefusal(path)) << path;
  for (const char* path : {"/", "", "//a//b/", "/a b/c"}) EXPECT_FALSE(RemotePathRefusal(path)) << path;
  EXPECT_EQ(PrintableName("a\x1b[31m\r\n\xc2\x9b\xc3\xbc"), "a?[31m???\xc3\xbc");
  EXPECT_EQ(PrintableName("\xE4\x9B[31m \xE9\x9B\xAA"), "\xE4?[31m \xE9\x9B\xAA") << "a byte of Latin-1 text";
  for (const char32_t turns : U"\u202A\u202B\u202C\u202D\u202E\u2066\u2067\u2068\u2069"s) {
    std::string name = "gpj.";
    AppendUtf8(name, turns);
    for (const std::string& shown :
         {PrintableName(name), ShownText(name), terminalText(name), printableReply(name, "")})
      EXPECT_EQ(shown, "gpj.?");
  }
  EXPECT_EQ(PrintableName("\u2029\u202F\u2065\u206A"), "\u2029\u202F\u2065\u206A") << "beside them";
}

TEST(Texts, ForSizes) {
  std::string texts;
  for (const double bytes : {0.0, 1.0, 1024.0, 1088.0, std::numeric_limits<double>::quiet_NaN(), 1048575.0,
                             1048576.0, 5e9, 1.5e30})
    texts += FormatSize(bytes) + "|";
  EXPECT_EQ(texts, "|1.000 Bytes|1.000 KB|1.062 KB||1,023.999 KB|1.000 MB|4.657 GB|1,240,770.919 YB|");
}

TEST(Texts, ForRates) {
  const std::pair<std::int64_t, std::int64_t> bytesAndMs[] = {{1000, 1000}, {1001, 1000},    {1280, 1000},
                                                              {7, 2000},    {1048576, 1000}, {1048577, 1000},
                                                              {100, 0},     {0, 1000},       {5, 2000}};
  std::string texts;
  for (const auto& [bytes, ms] : bytesAndMs) texts += FormatRate(bytes, ms) + "|";
  EXPECT_EQ(texts,
            "1000 Bytes/sec|1.0 KB/sec|1.3 KB/sec|4 Bytes/sec|1024.0 KB/sec|1.0 MB/sec|||2 Bytes/sec|");
}

TEST(RunLog, DropsItsStartWhenItHasGrownTooLong) {
  RecordingDisplay display;
  RunLog log(display);
  display.insertLogText(std::string(200'000, 'x'));
  log.AppendLog("y", {1, 2, 3}, false);
  EXPECT_THAT(display.trims, ElementsAre()) << "that long it may be";
  log.AppendLog("z", {1, 2, 3}, true);
  EXPECT_THAT(display.trims, ElementsAre(20'000));
  EXPECT_TRUE(display.log().ends_with("yz"));
  EXPECT_EQ(display.lineWith("y"), (RecordingDisplay::Line{"y", {1, 2, 3}, false}));
  EXPECT_EQ(display.lineWith("z"), (RecordingDisplay::Line{"z", {1, 2, 3}, true}));
  EXPECT_EQ(log.lineCount(), 2);
  log.zeroLineCount();
  EXPECT_EQ(log.lineCount(), 0);
}

TEST(TransferType, MatchesTheEndOfTheNameInLowerCase) {
  const struct {
    const char *extensions, *fileName, *type;
  } cases[] = {
      {".php|.html", "index.PHP", "A"},
      {".PHP", "index.PHP", "I"},
      {".t", "t", "I"},
      {"php", "php", "A"},
      {"", "anything", "I"},
      {"||.css|", "a.css", "A"},
      {".gz", "a.tar.gz", "A"},
      {"\xC3\xA4", "x\xC3\x84", "I"},
  };
  for (const auto& c : cases) {
    EXPECT_STREQ(ChooseTransferType(c.fileName, LoadAsciiFilesTypes(c.extensions)), c.type)
        << c.fileName << " by " << c.extensions;
  }
}

TEST(FtpAdvice, IsGivenForAFullServerAndForOneThatWantsEncryption) {
  const char* const full[] = {
      "421 Too many connections (8) from this IP",
      "530 Sorry, the maximum number of clients (3) from your host are already connected.",
      "421 Maximum session limit reached. Try again in 5 minutes.", "530 Only 2 simultaneous logins allowed.",
      "530-Welcome\r\n530 Max clients reached"};
  const char* const encrypted[] = {
      "530 Non-anonymous sessions must use encryption.",
      "421 Sorry, cleartext sessions and weak ciphers are not accepted on this server.",
      "550 SSL/TLS required on the control channel",
      "534 Policy requires SSL.",
      "522 TLS is required before USER",
      "530 Please use AUTH TLS first; maximum 5 connections.",
      "530 This server only accepts FTPS logins"};
  const char* const neither[] = {"530 Login incorrect.",
                                 "530 Login incorrect. TLS session established.",
                                 "530 Too many failed login attempts from your connection",
                                 "421 Idle timeout: the connection has reached its limit",
                                 "534 Request denied.",
                                 "550 Too many users"};
  const auto advice = [](const char* reply, const char* what = "refused the user name", bool tls = false) {
    return LoginAdvice(std::stoi(reply), std::string("The server ") + what + ": " + reply, tls);
  };
  for (const char* reply : full) EXPECT_THAT(advice(reply), HasSubstr("takes no more connections")) << reply;
  for (const char* reply : encrypted) EXPECT_THAT(advice(reply), HasSubstr("choose TLS")) << reply;
  for (const char* reply : neither) EXPECT_EQ(advice(reply), "") << reply;
  EXPECT_EQ(advice("550 must-use-tls.txt: No such file", "refused RETR"), "");
  EXPECT_EQ(advice("421 Out of memory.", "closed the session with too many connections"), "");
  EXPECT_EQ(advice(encrypted[0], "refused the user name", true), "");
  EXPECT_EQ(LoginAdvice(1006, "The server did not answer in time.", false), "");
}

constexpr Colour kRed{255, 0, 0};
constexpr Colour kBlue{0, 0, 255};

/// The lines as "red{...}blue{...}|".
std::string drawn(const LogText& log) {
  std::string all;
  for (std::size_t i = 0; i < log.lineCount(); ++i) {
    const LogLine& line = log.line(i);
    for (std::size_t r = 0; r < line.runs.size(); ++r) {
      const std::size_t begin = line.runs[r].begin;
      const std::size_t end = r + 1 < line.runs.size() ? line.runs[r + 1].begin : line.text.size();
      all += (line.runs[r].colour == kRed ? "red{" : "blue{") + line.text.substr(begin, end - begin) + "}";
    }
    all += "|";
  }
  return all;
}

LogText sample() {
  LogText log;
  log.setColour(kRed);
  log.append("Skipped: ");
  log.setColour(kBlue);
  log.append("upto date\r\nnext");
  return log;
}

TEST(LogText, ContinuesTheLineUntilABreak) {
  LogText log = sample();
  log.append(" word\r\n");
  EXPECT_EQ(drawn(log), "red{Skipped: }blue{upto date}|blue{next word}||");
  EXPECT_EQ(log.length(), 9u + 9 + 2 + 9 + 2);
}

TEST(LogText, TrimsAtAnyCharacter) {
  const struct {
    std::size_t characters;
    const char* left;
  } cases[] = {{0, "red{Skipped: }blue{upto date}|blue{next}|"},
               {4, "red{ped: }blue{upto date}|blue{next}|"},
               {9, "blue{upto date}|blue{next}|"},
               {18, "blue{}|blue{next}|"},  // the break is left
               {19, "blue{}|blue{next}|"},  // half of it
               {20, "blue{next}|"},
               {24, "blue{}|"},
               {1000, "blue{}|"}};
  for (const auto& one : cases) {
    LogText log = sample();
    for (const std::size_t part : {one.characters / 2, one.characters - one.characters / 2}) log.trim(part);
    EXPECT_EQ(drawn(log), one.left) << one.characters;
    EXPECT_EQ(log.length(), one.characters > 24 ? 0 : 24 - one.characters);
    EXPECT_EQ(log.firstLine() + log.lineCount(), 2U) << one.characters;
    log.append("!");
    EXPECT_TRUE(drawn(log).ends_with("!}|")) << one.characters;
  }
}

TEST(LogText, CountsAndCutsCharactersNotBytes) {
  LogText log;
  log.setColour(kRed);
  log.append("grüße €\r\n");
  EXPECT_EQ(log.length(), 9u);
  log.trim(3);
  EXPECT_EQ(drawn(log), "red{ße €}||");
}

TEST(LogText, ShowsWhateverBytesAServerSends) {
  const struct {
    std::string_view bytes;
    const char* shown;
  } cases[] = {{"caf\xE9.html", "café.html"},                     // ANSI
               {"\xC3", "\xC3\x83"},                              // the beginning of a character
               {"\xED\xA0\x80", "\xC3\xAD\xC2\xA0\xE2\x82\xAC"},  // half a surrogate pair
               {"\xC0\xAF", "\xC3\x80\xC2\xAF"},                  // an overlong "/"
               {"a\rb\x1b[31m\t\x7F", "a?b?[31m ?"},
               {"\x9B\xC2\x9B[m", "??[m"}};
  for (const auto& one : cases) {
    LogText log;
    log.setColour(kRed);
    log.append(one.bytes);
    EXPECT_EQ(log.line(0).text, one.shown);
  }
}

// --- prescribed numbers and words, written out again

TEST(GivenNumbers, AreHandedToTheClient) {
  FtpClient client;
  SiteProfile profile;
  profile.Timeout = "30";
  profile.ProxyType = 3;
  profile.ProxyHost = "h";
  profile.ProxyPort = "4";
  profile.ProxyUsername = "u";
  profile.ProxyPassword = "p";
  for (const bool passive : {true, false}) {
    profile.PASV = passive;
    SetFtpProperties(client, profile);
    EXPECT_EQ(client.passive(), passive);
  }
  EXPECT_EQ(client.timeoutMs, 30'000);
  EXPECT_EQ(client.proxyType * 10 + client.proxyPort, 34);
  profile.ProxyPort = "99999999999";
  SetFtpProperties(client, profile);
  EXPECT_EQ(client.proxyPort, 2147483647) << "as wrong as what was typed";
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
  const testing::OwnRegistry registry;
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
}

}  // namespace
}  // namespace quillmoor
