// Listings as servers write them, and the dates in them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "engine/ListingDate.h"
#include "engine/ListingParser.h"
#include "engine/mGeneral.h"

namespace quillmoor {
namespace {

using ::testing::ElementsAre;
using namespace std::string_literals;

const LocalDateTime kNow = *MakeLocalDateTime({2026, 11, 14, 10, 30, 0, 0});

struct LineCase {
  const char* name;
  std::string line;
  char type;
  std::string entry;
  std::int64_t size;
  const char* date;
  bool exact = true;
};

const std::vector<LineCase>& lineCases() {
  static const std::vector<LineCase> cases = {
      {"vsftpd", "-rw-r--r--    1 0        0            1024 Jan 15 12:34 index.html", '-', "index.html",
       1024, "Jan 15 12:34"},
      {"no group", "-rw-r--r--  1 joe  1024 Jan 15 12:34 a", '-', "a", 1024, "Jan 15 12:34"},
      {"folder", "drwxr-xr-x 1 ftp ftp              0 Jan 15  2009 images", 'd', "images", 0, "Jan 15 2009"},
      {"NetWare", "- [RWCEAFMS] joe      1024 Jan 15 12:34 a", '-', "a", 1024, "Jan 15 12:34"},
      {"ACL mark", "drwxr-xr-x+  5 a b 4096 Jan 15 12:34 acl", 'd', "acl", 4096, "Jan 15 12:34"},
      {"device", "crw-rw-rw-   1 root root   1,   3 Jan 15 12:34 null", 'c', "null", 0, "Jan 15 12:34",
       false},
      {"glued link count", "drwxr-xr-x1000 user     group        4096 Jan 15 12:34 wide", 'd', "wide", 4096,
       "Jan 15 12:34"},
      {"owner like a date", "-rw-r--r-- 1 Jan 15 1024 Jan 15 12:34 a", '-', "a", 1024, "Jan 15 12:34"},
      {"beyond 2^32", "-rw-r--r-- 1 a b 5000000000 Jan 15 12:34 iso", '-', "iso", 5000000000, "Jan 15 12:34"},
      {"beyond 2^63", "-rw-r--r-- 1 a b 99999999999999999999 Jan 15 12:34 x", '-', "x", INT64_MAX,
       "Jan 15 12:34", false},
      {"NetWare, glued", "d[RWCEAFMS]  joe  512 Jan 15 12:34 sys", 'd', "sys", 512, "Jan 15 12:34"},
      {"leading blank", " -rw-r--r-- 1 a b 1 Jan 15 12:34 a", '-', "a", 1, "Jan 15 12:34"},
      {"counted in 32 bits", "-rw-r--r-- 1 a b -2147483647 Jan 15 12:34 x", '-', "x", 2147483649,
       "Jan 15 12:34"},
      {"seconds", "-rw-r--r-- 1 a b 1 Jan 15 12:34:56 a", '-', "a", 1, "Jan 15 12:34"},
      {"afternoon", "-rw-r--r-- 1 a b 1 Jan 15 9:05PM a", '-', "a", 1, "Jan 15 21:05"},
      {"day first", "-rw-r--r-- 1 a b 1 15 Jan 12:34 a", '-', "a", 1, "Jan 15 12:34"},
      {"ISO, old", "-rw-r--r-- 1 a b 1 2009-01-15 12:34 a", '-', "a", 1, "Jan 15 2009"},
      {"ISO, this year", "-rw-r--r-- 1 a b 1 2026-01-15 12:34 a", '-', "a", 1, "Jan 15 12:34"},
      {"full ISO", "-rw-r--r-- 1 a b 1 2026-01-15 12:34:56.000000000 +0100 a", '-', "a", 1, "Jan 15 12:34"},
      {"ISO, short, old", "-rw-r--r-- 1 a b 1 2009-01-15  a", '-', "a", 1, "Jan 15 2009"},
      {"ISO, short, recent", "-rw-r--r-- 1 a b 1 01-15 12:34 a", '-', "a", 1, "Jan 15 12:34"},
      {"German", "-rw-r--r-- 1 a b 1 Mär 15 12:34 a", '-', "a", 1, "Mar 15 12:34"},
      {"German, day first", "-rw-r--r-- 1 a b 1 15. Dez 2009 a", '-', "a", 1, "Dec 15 2009"},
      {"French", "-rw-r--r-- 1 a b 1 août 15 12:34 a", '-', "a", 1, "Aug 15 12:34"},
      {"Russian, capital", "-rw-r--r-- 1 a b 1 Дек 15 12:34 a", '-', "a", 1, "Dec 15 12:34"},
      {"French in Latin-1", "-rw-r--r-- 1 a b 1 d\xE9\x63. 15 12:34 a", '-', "a", 1, "Dec 15 12:34"},
      {"Czech, day first", "-rw-r--r-- 1 a b 1 15. čec 2009 a", '-', "a", 1, "Jul 15 2009"},
      {"Korean", "-rw-r--r-- 1 a b 1 1월 15일 12:34 a", '-', "a", 1, "Jan 15 12:34"},
      {"a language unknown here", "-rw-r--r-- 1 a b 1 eanáir 15 12:34 a", '-', "a", 1, "eanáir 15 12:34"},
      {"name with a NUL", "-rw-r--r-- 1 a b 1 Jan 15 12:34 a\0b"s, '-', "a\0b"s, 1, "Jan 15 12:34"},
      {"CR CR", "-rw-r--r-- 1 a b 1 Jan 15 12:34 a\r", '-', "a", 1, "Jan 15 12:34"},
      {"IIS", "01-15-09  10:30AM                 1024 index.html", '-', "index.html", 1024, "Jan 15 2009"},
      {"IIS folder", "01-15-09  10:30AM       <DIR>          images", 'd', "images", 0, "Jan 15 2009"},
      {"IIS, 24 hours", "01-15-26  22:30                 1024 a b", '-', "a b", 1024, "Jan 15 22:30"},
      {"IIS, midnight", "01-15-26  12:05AM            1,234,567 a", '-', "a", 1234567, "Jan 15 00:05"},
      {"IIS folder with leading blank", "01-15-09  10:30AM       <DIR>           images", 'd', " images", 0,
       "Jan 15 2009"},
      {"DOS, day first", "15-01-09  10:30                 1 a", '-', "a", 1, "Jan 15 2009"},
      {"DOS, ISO", "2009-01-15  10:30AM       <DIR>          a", 'd', "a", 0, "Jan 15 2009"},
      {"IIS junction", "01-15-09  10:30AM       <JUNCTION>     j", 'l', "j", 0, "Jan 15 2009"},
      {"DOS link", "01-15-09  10:30AM       <SYMLINKD>     s [C:\\t]", 'l', "s [C:\\t]", 0, "Jan 15 2009"},
      {"DOS, German", "14.11.2009  09:15             1.234.567 a", '-', "a", 1234567, "Nov 14 2009"},
      {"dots, this year", "-rw-r--r-- 1 a b 1 14.11.2026 09:15 a", '-', "a", 1, "Nov 14 09:15"},
      {"dots without a time", "-rw-r--r-- 1 a b 1 4.11.2009 a", '-', "a", 1, "Nov 4 2009"},
      {"dots, short year", "-rw-r--r-- 1 a b 1 14.11.09 09.15 a", '-', "a", 1, "Nov 14 2009"},
      {"slashes, time with a dot", "-rw-r--r-- 1 a b 1 14/11/2026 09.15 a", '-', "a", 1, "Nov 14 09:15"},
      {"slashes, time with an h", "-rw-r--r-- 1 a b 1 14/11/2026 9h05 a", '-', "a", 1, "Nov 14 09:05"},
      {"slashes, year first", "-rw-r--r-- 1 a b 1 2009/11/14 09:15 a", '-', "a", 1, "Nov 14 2009"},
      {"slashes, all one", "-rw-r--r-- 1 a b 1 03/03/2009 09:15 a", '-', "a", 1, "Mar 3 2009"},
      {"slashes, order unknown", "-rw-r--r-- 1 a b 1 03/04/2009 09:15 a", '-', "a", 1, "03/04/2009 09:15"},
      {"slashes, year unknown", "-rw-r--r-- 1 a b 1 14/11/26 09:15 a", '-', "a", 1, "14/11/26 09:15"},
      {"ISO, time with a dot", "-rw-r--r-- 1 a b 1 2026-11-14 09.15 a", '-', "a", 1, "Nov 14 09:15"},
      {"ISO, name like a time", "-rw-r--r-- 1 a b 1 2009-11-14  09.15 a", '-', "09.15 a", 1, "Nov 14 2009"},
      {"French", "-rw-r--r-- 1 a b 1 14 août 09h15 a", '-', "a", 1, "Aug 14 09:15"},
      {"year and time", "-rw-r--r-- 1 a b 1 Nov 14 2026 09:00 both", '-', "both", 1, "Nov 14 09:00"},
      {"year and name like a time", "-rw-r--r-- 1 a b 1 Nov 14  2025 09:00", '-', "09:00", 1, "Nov 14 2025"},
      {"rounded size", "-rw-r--r-- 1 a b 1.5K Jan 15 12:34 a", '-', "a", 1536, "Jan 15 12:34", false},
      {"rounded, comma", "-rw-r--r-- 1 a b 3,4M Jan 15 12:34 a", '-', "a", 3565158, "Jan 15 12:34", false},
      {"rounded, unit", "-rw-r--r-- 1 a b 2GiB Jan 15 12:34 a", '-', "a", 2147483648, "Jan 15 12:34", false},
      {"rounded, beyond 2^63", "-rw-r--r-- 1 a b 9999999P Jan 15 12:34 a", '-', "a", INT64_MAX,
       "Jan 15 12:34", false},
      {"inode and blocks", "  1311 8 -rw-r--r-- 1 a b 7 Jan 15 12:34 a", '-', "a", 7, "Jan 15 12:34"},
      {"rounded blocks", "4.0K drwxr-xr-x 1 a b 4096 Jan 15 12:34 d", 'd', "d", 4096, "Jan 15 12:34"},
      {"long group", "-rw-r--r-- 1 joe averylonggroup1024 Jan 15 12:34 a", '-', "a", 1024, "Jan 15 12:34",
       false},
      {"owners with blanks", "-rw-r--r-- 1 D\\John von Neumann Domain Users 9 Jan 15 12:34 a", '-', "a", 9,
       "Jan 15 12:34"},
  };
  return cases;
}

TEST(ListingParser, ReadsTheLinesOfRealServers) {
  for (const auto& c : lineCases()) {
    for (const char* end : {"\r\n", "\n", ""}) {
      const RemoteListing listing = ParseListing(c.line + end, kNow);
      ASSERT_EQ(listing.entries.size(), 1U) << c.name;
      const RemoteEntry& entry = listing.entries[0];
      EXPECT_EQ(entry.type, std::string(1, c.type)) << c.name;
      EXPECT_EQ(entry.name, c.entry) << c.name;
      EXPECT_EQ(entry.sizeBytes, c.size) << c.name;
      EXPECT_EQ(entry.size, std::min<std::int64_t>(c.size, INT32_MAX)) << c.name;
      EXPECT_EQ(entry.dateText, c.date) << c.name;
      EXPECT_EQ(entry.sizeExact, c.exact) << c.name;
      const std::string_view name = c.name;
      const bool dos = name.starts_with("IIS") || name.starts_with("DOS");
      EXPECT_EQ(listing.format, dos ? ListingFormat::dosStyle : ListingFormat::unixStyle) << c.name;
    }
  }
}

TEST(ListingParser, ReadsOwnersAndPermissions) {
  const struct {
    const char *line, *user, *group;
    std::int32_t permissions;
  } cases[] = {{"-rw-r--r-- 1 joe www 1 Jan 15 12:34 a", "joe", "www", 0644},
               {"-rwsr-Sr-T 1 0 100 1 Jan 15 12:34 a", "0", "100", 07744},
               {"drwxrwxrwt 1 joe 1 Jan 15 12:34 a", "joe", "", 01777},
               {"-rw------- 1 joe Domain Users 1 Jan 15 12:34 a", "joe", "Domain Users", 0600},
               {"- [RWCE] joe 1 Jan 15 12:34 a", "joe", "", 0},
               {"-rw-r--r-- 1000joe staff 1 Jan 15 12:34 a", "joe", "staff", 0644},
               {"-rw-r--r--1000 3com staff 1 Jan 15 12:34 a", "3com", "staff", 0644},
               {"crw-rw-rw- 1 root sys 1,   3 Jan 15 12:34 null", "root", "sys", 0666},
               {"01-15-09  10:30AM 1 a", "", "", 0}};
  for (const auto& c : cases) {
    const auto listing = ParseListing(c.line, kNow);
    ASSERT_EQ(listing.entries.size(), 1U) << c.line;
    EXPECT_EQ(listing.entries[0].user, c.user) << c.line;
    EXPECT_EQ(listing.entries[0].group, c.group) << c.line;
    EXPECT_EQ(listing.entries[0].permissions, c.permissions) << c.line;
  }
}

TEST(ListingParser, FindsTheArrowOfALink) {
  const struct {
    const char *line, *name, *target;
  } cases[] = {{"lrwxrwxrwx 1 0 0 11 Jan 15 12:34 current -> releases/42", "current", "releases/42"},
               {"lrwxrwxrwx 1 0 0 6 Jan 15 12:34 a -> b -> target", "a -> b", "target"},
               {"lrwxrwxrwx 1 0 0 11 Jan 15 12:34 a -> b -> target", "a", "b -> target"},
               {"lrwxrwxrwx 1 0 0 0 Jan 15 12:34 a -> b -> target", "a", "b -> target"},
               {"lrwxrwxrwx 1 0 0 1 Jan 15 12:34  -> b", " -> b", ""},
               {"lrwxrwxrwx 1 0 0 99999999999999999999 Jan 15 12:34 a -> b", "a", "b"},
               {"lrwxrwxrwx 1 0 0 3 Jan 15 12:34 no arrow", "no arrow", ""},
               {"lrwxrwxrwx 1 0 0 1 Jan 15 12:34 . -> b", ".", "b"},
               {"lrwxrwxrwx 1 0 0 1 Nov 14 2025 09:00 a/\\ -> b", "a/\\", "b"}};
  for (const auto& c : cases) {
    const auto listing = ParseListing(c.line, kNow);
    ASSERT_EQ(listing.entries.size(), 1U) << c.line;
    EXPECT_EQ(listing.entries[0].name, c.name) << c.line;
    EXPECT_EQ(listing.entries[0].linkTarget, c.target) << c.line;
    EXPECT_EQ(listing.entries[0].type, "l") << c.line;
  }
}

TEST(ListingParser, PassesOverNoiseAndSaysWhenItUnderstoodNothing) {
  const struct {
    const char *name, *text;
    std::size_t entries;
    ListingFormat format;
  } cases[] = {
      {"empty", "", 0, ListingFormat::unixStyle},
      {"total", "total 0\r\n", 0, ListingFormat::unixStyle},
      {"blank lines and headings", "\r\n.:\r\nsub dir:\r\n", 0, ListingFormat::unixStyle},
      {"total in German", "insgesamt 12\r\n", 0, ListingFormat::unixStyle},
      {"headings between lines",
       "-rw-r--r-- 1 a b 1 Jan 15 12:34 a\nfolder:\n-rw-r--r-- 1 a b 1 Jan 15 12:34 b\n", 2,
       ListingFormat::unixStyle},
      {"names and sizes alone", "README 1024\r\nLICENSE 10\r\n", 0, ListingFormat::neither},
      {"neither", "0 07/11/09 A.TXT\r\nVolume full\r\n", 0, ListingFormat::neither},
      {"no date at all", "-rw-r--r-- 1 a b 1 Jan 99 12:34 a\r\n", 0, ListingFormat::neither},
      {"binary", "\x01\x02\x03\xFF\r\n", 0, ListingFormat::neither},
  };
  for (const auto& c : cases) {
    const auto listing = ParseListing(c.text, kNow);
    EXPECT_EQ(listing.entries.size(), c.entries) << c.name;
    EXPECT_EQ(listing.format, c.format) << c.name;
    EXPECT_EQ(listing.text, c.text) << c.name;
  }
}

TEST(ListingParser, SettlesByTheOtherLinesWhatOneLineLeavesOpen) {
  const struct {
    std::vector<std::string> dates;  // each with what stands before the name
    std::vector<std::string> meanings;
    const char* name;
  } cases[] = {
      {{"03/04/2009 09:15 ", "14/04/2009 09:15 "}, {"Apr 3 2009", "Apr 14 2009"}, "a"},
      {{"04/14/2009 09:15 ", "03/04/2009 09:15 "}, {"Apr 14 2009", "Mar 4 2009"}, "a"},
      {{"03.04.2009 09:15 "}, {"Apr 3 2009"}, "a"},
      {{"03.04.2009 09:15 ", "04.14.2009 09:15 "}, {"Mar 4 2009", "Apr 14 2009"}, "a"},
      {{"14.04.2009 09:15 ", "04.14.2009 09:15 ", "03.04.2009 09:15 "},
       {"Apr 14 2009", "Apr 14 2009", "03.04.2009 09:15"},
       "a"},
      {{"Nov 14 2025 09:00 ", "Nov 15 2025 10:00 "}, {"Nov 14 2025", "Nov 15 2025"}, "a"},
      {{"Nov 14 2025 ", "Nov 15 2025 "}, {"Nov 14 2025", "Nov 15 2025"}, "09:00 a"},
      {{"Nov 14 2025 ", "Nov 15 09:00 "}, {"Nov 14 2025", "Nov 15 09:00"}, "09:00 a"},
  };
  for (const auto& c : cases) {
    std::string text;
    for (const auto& date : c.dates) text += "-rw-r--r-- 1 a b 1 " + date + c.name + "\n";
    // A name like a time alone does not tell: the line of the folder itself does.
    if (c.name[0] == '0') text += "drwxr-xr-x 1 a b 1 Nov 14 09:00 .\n";
    const auto listing = ParseListing(text, kNow);
    ASSERT_GE(listing.entries.size(), c.dates.size()) << text;
    for (std::size_t i = 0; i < c.dates.size(); ++i) {
      EXPECT_EQ(listing.entries[i].dateText, c.meanings[i]) << text;
      EXPECT_EQ(listing.entries[i].name, c.name) << text;
    }
  }
  for (const auto& [settling, date] :
       {std::pair("01-15-09", "Mar 4 2009"), std::pair("15-01-09", "Apr 3 2009"),
        std::pair("03-04-09", "Mar 4 2009")}) {
    const auto listing =
        ParseListing("03-04-09  10:30AM  1 a\n" + std::string(settling) + "  10:30AM  1 b\n", kNow);
    EXPECT_EQ(listing.entries.at(0).dateText, date) << settling;
  }
}

TEST(ListingParser, KeepsTheLinesBesideEntriesThatItCannotRead) {
  const std::string a = "-rw-r--r-- 1 a b 1 Jan 15 12:34 a\r\n",
                    d = "drwxr-xr-x 1 a b 1 Jan 15 12:34 sub\r\n";
  const struct {
    const char* name;
    std::string text;
    std::size_t entries;
    std::vector<std::string> unread;
  } cases[] = {
      {"banner", "Welcome\r\ntotal 4\r\n" + a, 1, {"Welcome"}},
      {"path of the folder", "/www/pages\r\n" + a + "/www/lost\r\n", 1, {"/www/lost"}},
      {"note after a blank line", a + "\r\nThe following are old\r\n" + a, 2, {"The following are old"}},
      {"note with a colon after a blank line", a + "\r\nThe following:\r\n" + a, 2, {}},
      {"date unknown", a + "-rw-r--r-- 1 a b 1 yesterday old:\r\n", 1, {"-rw-r--r-- 1 a b 1 yesterday old:"}},
      {"half a line", a + "-rw-r--r-- 1 a b 1 Jan 15 12:3", 1, {"-rw-r--r-- 1 a b 1 Jan 15 12:3"}},
      {"mark unknown", a + "01-15-09  10:30AM  <GONE>  b\r\n", 1, {"01-15-09  10:30AM  <GONE>  b"}},
      {"ornament", a + "---------- Mod 5 Jan 15 2026 me\r\n", 1, {"---------- Mod 5 Jan 15 2026 me"}},
      {"bullet", a + "- [NEW] release 2 Jan 15 2026 is out\r\n", 1, {"- [NEW] release 2 Jan 15 2026 is out"}},
      {"number in front", a + "12 bottles 3 Jan 15 2026 left\r\n", 1, {"12 bottles 3 Jan 15 2026 left"}},
      {"frame of dir",
       " Volume in drive C is X\r\n Directory of C:\\\r\n\r\n" + a + " 1 File(s)  1 bytes",
       1,
       {}},
      {"subfolder", a + d + "\r\nsub:\r\ntotal 1\r\n" + a + "odd\r\n", 2, {}},
      {"subfolder by its path", a + d + "\r\n/www/sub:\r\n" + a, 2, {}},
      {"subfolder of dir", a + d + "\r\n Directory of C:\\sub\r\n" + a, 2, {}},
      {"some other folder", a + "\r\n./lost:\r\n" + d, 1, {d.substr(0, d.size() - 2)}},
      {"some other folder by its total", a + "\r\nlost:\r\ntotal 1\r\n" + d, 1, {d.substr(0, d.size() - 2)}},
      {"names and sizes alone beside an entry",
       a + "README 1024\r\nnotes:\r\n",
       1,
       {"README 1024", "notes:"}},
      {"nothing readable", "Welcome\r\n1 File(s)  1 bytes\r\n", 0, {}},
  };
  for (const auto& c : cases) {
    const auto listing = ParseListing(c.text, kNow);
    EXPECT_EQ(listing.entries.size(), c.entries) << c.name;
    EXPECT_EQ(listing.unread, c.unread) << c.name;
    EXPECT_EQ(listing.unreadCount, c.unread.size()) << c.name;
  }
  std::string many = a;
  for (std::size_t i = 0; i < RemoteListing::kMostUnread + 5; ++i) many += "odd\r\n";
  EXPECT_EQ(ParseListing(many, kNow).unread.size(), RemoteListing::kMostUnread);
  EXPECT_EQ(ParseListing(many, kNow).unreadCount, RemoteListing::kMostUnread + 5);
}

TEST(ListingParser, GivesBackWhatAServerListsInAnyForm) {
  std::mt19937 random(13);
  const auto anyOf = [&](const std::vector<std::string>& list) { return list[random() % list.size()]; };
  const std::vector<std::string> parts = {"a",     " ",          "  ",    "\"", "'",  " -> ", "Jan 15 2009 ",
                                          "1 ",    "14.11.2026", "[x]",   "\\", ":",  "ü",    "\xFC",
                                          "1.5K ", "<DIR>",      "12:34", "~",  "- ", "total"};
  // "%" stands for the size and the name.
  const std::vector<std::string> forms = {
      "-rw-r--r-- 1 # % Jan 15 12:34 %",
      "-rw-r--r--   1 # % Jan 15  2009 %",
      "-rw-r--r-- 1 # % 15 Jan 12:34 %",
      "-rw-r--r-- 1 # % 2009-01-15 12:34 %",
      "-rw-r--r-- 1 # % 2009/01/15 12:34 %",
      "-rw-r--r-- 1 # % 15.01.2009 12:34 %",
      "-rw-r--r-- 1 # % 15/01/2009 12h34 %",
      "77 8 -rw-r--r-- 1 # % 15/01/2009 12.34 %",
      "- [RWCEAFMS] joe % Jan 15 12:34 %",
      "01-15-09  10:30AM  % %",
      "15.01.2009  22:30  % %",
      "drwxr-xr-x 1 # % Jan 15 12:34 %",
      "lrwxrwxrwx 1 # 1 Jan 15 12:34 % -> t",
  };
  for (int round = 0; round < 20'000; ++round) {
    std::string name = "x";
    for (auto more = random() % 5; more > 0; --more) name.insert(random() % 2 * name.size(), anyOf(parts));
    const auto size = static_cast<std::int64_t>(random()) << random() % 20;
    std::string line = anyOf(forms);
    if (const auto at = line.find('#'); at != std::string::npos)
      line.replace(at, 1, anyOf({"joe www", "0 0", "joe Domain Users", "D\\von Neumann staff", "joe"}));
    const char type = line[0] == 'd' || line[0] == 'l' ? line[0] : '-';
    if (type != 'l') line.replace(line.find('%'), 1, std::to_string(size));
    line.replace(line.find('%'), 1, name);
    // One more line shows that the time after a year is the name's.
    const auto listing = ParseListing(line + "\r\n-rw-r--r-- 1 a b 1 Jan 15 12:34 z\r\n", kNow);
    ASSERT_EQ(listing.entries.size(), 2U) << line;
    EXPECT_EQ(listing.entries[0].name, name) << line;
    EXPECT_EQ(listing.entries[0].type, std::string(1, type)) << line;
    EXPECT_EQ(listing.entries[0].sizeBytes, type == 'l' ? 1 : size) << line;
    EXPECT_NE(ParseListingDate(listing.entries[0].dateText, kNow), kNow) << line;
  }
}

TEST(ListingParser, ReadsAMillionLinesInOnePass) {
  std::string text;
  for (int i = 0; i < 1'000'000; ++i) {
    text += "-rw-r--r--   1 owner    group        1024 Jan 15 12:34 file" + std::to_string(i) + ".html\r\n";
  }
  const RemoteListing listing = ParseListing(std::move(text), kNow);
  ASSERT_EQ(listing.entries.size(), 1'000'000U);
  EXPECT_EQ(listing.entries.back().name, "file999999.html");
}

TEST(ListingDate, ReadsTheDatesOfListings) {
  const struct {
    const char *text, *meaning;
  } cases[] = {
      {"Jan 15 12:34", "2026-01-15 12:34:00"},
      {"jan 15 12:34", "2026-01-15 12:34:00"},
      {"Jan 15 2009", "2009-01-15 12:00:00"},
      {"Jan  5 2009", "2009-01-05 12:00:00"},
      {"Jan  5  2009", "2009-01-05 12:00:00"},
      {"Dec 31 10:00", "2026-12-31 10:00:00"},
      {"1 15 2009", "2009-01-15 12:00:00"},
      {"Feb 29 2008", "2008-02-29 12:00:00"},
      {"Jan 05 2009", "2009-01-05 12:00:00"},
      {"Jan 15 12:34:56", "2026-01-15 12:34:56"},
      {"Jan 15 2009 and more", "2009-01-15 12:00:00"},
  };
  for (const auto& c : cases) EXPECT_EQ(GeneralDateText(ParseListingDate(c.text, kNow)), c.meaning) << c.text;
  std::istringstream unreadable(
      "|Jan 15|Jan   5 2009|01-15-09 10:30AM|03/04/2009 09:15|Feb 30 2009|Jan x 2009|Jan 15 24:00|Jan 15 "
      "12:60|"
      "Jan 0 2009|Foo 15 2009|Jan 15 :|Jan 15 12:34:60|Jan 15 012:34|Jan 15 09|Mär 15 2009|Jan -5 2009| Jan "
      "15 2009");
  for (std::string text; std::getline(unreadable, text, '|');)
    EXPECT_EQ(ParseListingDate(text, kNow), kNow) << text;
}

}  // namespace
}  // namespace quillmoor
