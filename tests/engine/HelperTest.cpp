// Paths, names, texts and the log: the engine's small rules.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <set>
#include <string>
#include <vector>

#include "base/Utf8.h"
#include "console/ConsoleDisplay.h"
#include "engine/RecordingDisplay.h"
#include "engine/RunLog.h"
#include "engine/SafeName.h"
#include "engine/ShownText.h"
#include "engine/mCreatePath.h"
#include "engine/mGeneral.h"
#include "platform/ftp/FtpReply.h"
#include "support/TemporaryFolder.h"

namespace quillmoor {
namespace {

using ::testing::ElementsAre;
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

TEST(LocalPaths, MirrorRemoteOnes) {
  constexpr auto kCut = FolderNames::cut, kAsListed = FolderNames::asListed;
  const struct {
    FolderNames names;
    const char *target, *currentDir;
    char separator;
    const char* folder;
  } cases[] = {
      {kCut, "C:\\backup\\site", "/", '\\', "C:\\backup\\site\\"},
      {kCut, "C:\\backup\\site", "/www/img", '\\', "C:\\backup\\site\\www\\img\\"},
      {kCut, "C:\\backup\\site", "www", '\\', "C:\\backup\\site\\www\\"},
      {kCut, "\\\\server\\share", "/www", '\\', "\\server\\share\\www\\"},
      {kCut, "/backup/site", "/www/img", '/', "/backup/site/www/img/"},
      {kCut, "/backup/site", "/odd\\name", '/', "/backup/site/odd\\name/"},
      {kCut, "/backup/site", "///www", '/', "/backup/site//www/"},
      {kAsListed, "\\\\nas\\backup", "/www", '\\', "\\\\nas\\backup\\www\\"},
      {kAsListed, " \\\\nas\\\\backup\\", "/www", '\\', "\\\\nas\\backup\\www\\"},
      {kAsListed, "C:\\backup\\", "/photos [2024]/ a ", '\\', "C:\\backup\\photos [2024]\\ a \\"},
      {kAsListed, "/backup/[x] site", "/photos [2024]", '/', "/backup/[x] site/photos [2024]/"},
      {kAsListed, "//backup", "/www", '/', "/backup/www/"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(LocalFolderFor(c.target, c.currentDir, c.separator, c.names), c.folder);
  EXPECT_EQ(AddTrailingSeparator(" /a [b] ", true, '/', kAsListed), " /a [b] /");
}

TEST(LocalPaths, AreCreatedLevelByLevel) {
  const struct {
    const char* path;
    std::set<std::string> there;
    std::set<std::string> unwilling;
    bool result;
    std::vector<std::string> created;
    char separator = '\\';
  } cases[] = {
      {"", {}, {}, false, {}},
      {"C:\\a\\b", {"C:\\a\\b"}, {}, true, {}},
      {"C:\\a\\b\\c", {"C:\\a"}, {}, true, {"C:\\a\\b", "C:\\a\\b\\c"}},
      {"C:\\a\\\\b\\", {}, {}, true, {"C:\\a", "C:\\a\\b"}},
      {"C:\\a\\b\\c", {}, {"C:\\a\\b"}, false, {"C:\\a"}},
      {"\\\\server\\share\\x", {"\\\\server\\share"}, {}, true, {"\\\\server\\share\\x"}},
      // Once a level was missing those below are created without a look.
      {"C:\\a\\b", {"C:\\a\\b\\"}, {}, true, {"C:\\a", "C:\\a\\b"}},
      // Two slashes name no server.
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
  const testing::TemporaryFolder folder;
  EXPECT_TRUE(CreatePath((folder / "a/b/c").string()));
  EXPECT_TRUE(std::filesystem::is_directory(folder / "a/b/c"));
  testing::writeFile(folder / "file", "");
  EXPECT_FALSE(CreatePath((folder / "file/below").string()));
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
  for (const char* name : {"COM\u00B9", "lpt\u00B2.txt"}) {
    EXPECT_TRUE(ListedNameRefusal(name, LocalNameRules::windows)) << name;
  }
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

TEST(SafeName, RefusesFoldersThatWouldLieOutsideTheTarget) {
  const struct {
    const char *target, *currentDir;
    LocalNameRules rules;
    bool refused;
    FolderNames names = FolderNames::cut;
  } cases[] = {
      {"/backup/site", "/www/a b", LocalNameRules::posix, false},
      {"/backup/site", "/", LocalNameRules::posix, false},
      {"/backup/site", "///www", LocalNameRules::posix, false},
      {"/backup/site", "/a[1]/b", LocalNameRules::posix, false},
      {"/backup/site", "/a/ ..", LocalNameRules::posix, false},
      {"/backup/[old] [x] site", "/a]b", LocalNameRules::posix, false},
      {"/backup/site", "/.. ", LocalNameRules::posix, true},
      {"/backup/site", "/a/..  ", LocalNameRules::posix, true},
      {"/backup/site", "/.[x].", LocalNameRules::posix, true},
      {"/backup/site", "/.[a/b]./c", LocalNameRules::posix, true},
      {"/backup/[site", "/a]../c", LocalNameRules::posix, true},
      {"/backup/[site", "/a]c", LocalNameRules::posix, true},
      {"C:\\backup", "/www", LocalNameRules::windows, false},
      {"\\\\server\\share", "/www", LocalNameRules::windows, false},
      {"C:\\backup", "/C[x]ON", LocalNameRules::windows, true},
      {"C:\\backup", "/a\\..\\b", LocalNameRules::windows, true},
      {"/backup/[site", "/a]../c", LocalNameRules::posix, false, FolderNames::asListed},
      {"/backup/site", "/.[x].", LocalNameRules::posix, false, FolderNames::asListed},
      {"/backup/site", "/a/..", LocalNameRules::posix, true, FolderNames::asListed},
      {"\\\\nas\\share", "/photos [2024]", LocalNameRules::windows, false, FolderNames::asListed},
      {"\\\\nas\\share", "/a ", LocalNameRules::windows, true, FolderNames::asListed},
  };
  for (const auto& c : cases) {
    const auto refusal = LocalFolderRefusal(c.target, c.currentDir, c.rules, c.names);
    EXPECT_EQ(refusal.has_value(), c.refused) << c.target << " and " << c.currentDir;
    // The path alone tells, unless the target leaves a bracket open.
    if (std::string_view(c.target).find('[') == std::string_view::npos) {
      EXPECT_EQ(RemotePathRefusal(c.currentDir, c.rules, c.names).has_value(), c.refused) << c.currentDir;
    }
  }
}

TEST(Texts, ForSizes) {
  const struct {
    double bytes;
    const char* text;
  } cases[] = {{0, ""},
               {0.5, ""},
               {1, "1.000 Bytes"},
               {1023, "1,023.000 Bytes"},
               {1024, "1.000 KB"},
               {1536, "1.500 KB"},
               {1088, "1.062 KB"},
               {std::numeric_limits<double>::infinity(), ""},
               {std::numeric_limits<double>::quiet_NaN(), ""},
               {1048575, "1,023.999 KB"},
               {1048576, "1.000 MB"},
               {5e9, "4.657 GB"},
               {1.3e27, "1,075.335 YB"},
               {1.5e30, "1,240,770.919 YB"}};
  for (const auto& c : cases) EXPECT_EQ(FormatSize(c.bytes), c.text);
}

TEST(Texts, ForRates) {
  const struct {
    std::int64_t bytes, ms;
    const char* text;
  } cases[] = {{1000, 1000, "1000 Bytes/sec"},
               {1001, 1000, "1.0 KB/sec"},
               {2048, 1000, "2.0 KB/sec"},
               {1280, 1000, "1.3 KB/sec"},
               {5, 2000, "2 Bytes/sec"},
               {7, 2000, "4 Bytes/sec"},
               {1048576, 1000, "1024.0 KB/sec"},
               {1048577, 1000, "1.0 MB/sec"},
               {3145728, 2000, "1.5 MB/sec"},
               {100, 0, ""},
               {0, 1000, ""},
               {1, 10'000, ""},
               {1, 1000, "1 Bytes/sec"}};
  for (const auto& c : cases) EXPECT_EQ(FormatRate(c.bytes, c.ms), c.text) << c.bytes;
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
  EXPECT_THAT(display.colours, ElementsAre(Colour{1, 2, 3}, kButtonFace, Colour{1, 2, 3}));
  EXPECT_EQ(log.lineCount(), 2);
  log.zeroLineCount();
  EXPECT_EQ(log.lineCount(), 0);
}

TEST(LocalDates, AreDatesOfTheCalendar) {
  EXPECT_EQ(SplitLocalDateTime(*MakeLocalDateTime({2026, 11, 14, 23, 59, 58, 0})).weekday, 7) << "a Saturday";
  EXPECT_EQ(SplitLocalDateTime(*MakeLocalDateTime({1969, 12, 31, 1, 2, 3, 0})).hour, 1);
  for (const LocalDateTimeParts& parts : {LocalDateTimeParts{2026, 2, 29, 0, 0, 0, 0},
                                          {2026, 13, 1, 0, 0, 0, 0},
                                          {2026, 1, 1, 24, 0, 0, 0},
                                          {0, 1, 1, 0, 0, 0, 0}}) {
    EXPECT_FALSE(MakeLocalDateTime(parts));
  }
}

}  // namespace
}  // namespace quillmoor
