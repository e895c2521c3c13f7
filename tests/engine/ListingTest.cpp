// Listings as servers write them, and the dates in them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

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

TEST(ListingParser, ReadsTheLinesOfRealServers) {
  constexpr const char* kDate = "Jan 15 12:34";
  const LineCase cases[] = {
      {"vsftpd", "-rw-r--r--    1 0        0            1024 Jan 15 12:34 a.b", '-', "a.b", 1024, kDate},
      {"folder", "drwxr-xr-x 1 ftp ftp              0 Jan 15  2009 images", 'd', "images", 0, "Jan 15 2009"},
      {"NetWare", "- [RWCEAFMS] joe      1024 Jan 15 12:34 a", '-', "a", 1024, kDate},
      {"ACL mark", "drwxr-xr-x+  5 a b 4096 Jan 15 12:34 acl", 'd', "acl", 4096, kDate},
      {"device", "crw-rw-rw-   1 root root   1,   3 Jan 15 12:34 null", 'c', "null", 0, kDate, false},
      {"glued link count", "drwxr-xr-x1000 user     group        4096 Jan 15 12:34 wide", 'd', "wide", 4096,
       kDate},
      {"owner like a date", "-rw-r--r-- 1 Jan 15 1024 Jan 15 12:34 a", '-', "a", 1024, kDate},
      {"NetWare, glued", "d[RWCEAFMS]  joe  512 Jan 15 12:34 sys", 'd', "sys", 512, kDate},
      {"leading blank", " -rw-r--r-- 1 a b 1 Jan 15 12:34 a", '-', "a", 1, kDate},
      {"name with a NUL", "-rw-r--r-- 1 a b 1 Jan 15 12:34 a\0b"s, '-', "a\0b"s, 1, kDate},
      {"CR CR", "-rw-r--r-- 1 a b 1 Jan 15 12:34 a\r", '-', "a", 1, kDate},
      {"IIS", "01-15-09  10:30AM                 1024 index.html", '-', "index.html", 1024, "Jan 15 2009"},
      {"IIS folder", "01-15-09  10:30AM       <DIR>          images", 'd', "images", 0, "Jan 15 2009"},
      {"IIS, 24 hours", "01-15-26  22:30                 1024 a b", '-', "a b", 1024, "Jan 15 22:30"},
      {"IIS, midnight", "01-15-26  12:05AM            1,234,567 a", '-', "a", 1234567, "Jan 15 00:05"},
      {"IIS folder with leading blank", "01-15-09  10:30AM       <DIR>           images", 'd', " images", 0,
       "Jan 15 2009"},
      {"DOS, AM apart", "01-15-09  10:30 AM                1 a", '-', "a", 1, "Jan 15 2009"},
      {"DOS, day first", "15-01-09  10:30                 1 a", '-', "a", 1, "Jan 15 2009"},
      {"DOS, ISO", "2009-01-15  10:30AM       <DIR>          a", 'd', "a", 0, "Jan 15 2009"},
      {"IIS junction", "01-15-09  10:30AM       <JUNCTION>     j", 'l', "j", 0, "Jan 15 2009"},
      {"DOS link", "01-15-09  10:30AM       <SYMLINKD>     s [C:\\t]", 'l', "s [C:\\t]", 0, "Jan 15 2009"},
      {"DOS, German", "14.11.2009  09:15             1.234.567 a", '-', "a", 1234567, "Nov 14 2009"},
      {"ISO, name like a time", "-rw-r--r-- 1 a b 1 2009-11-14  09.15 a", '-', "09.15 a", 1, "Nov 14 2009"},
      {"year and name like a time", "-rw-r--r-- 1 a b 1 Nov 14  2026 09:00", '-', "09:00", 1, "Nov 14 2026"},
      {"year and name with a dot", "-rw-r--r-- 1 a b 1 Nov 14  2026 09.15 a", '-', "09.15 a", 1,
       "Nov 14 2026"},
      {"German, name like a time", "-rw-r--r-- 1 a b 1 14.11.2025 09.15", '-', "09.15", 1, "Nov 14 2025"},
      {"inode and blocks", "  1311 8 -rw-r--r-- 1 a b 7 Jan 15 12:34 a", '-', "a", 7, kDate},
      {"rounded blocks", "4.0K drwxr-xr-x 1 a b 4096 Jan 15 12:34 d", 'd', "d", 4096, kDate},
      {"long group", "-rw-r--r-- 1 joe averylonggroup1024 Jan 15 12:34 a", '-', "a", 1024, kDate, false},
      {"no owners, name like size and date", "-rw-r--r-- 1024 Jan 15 12:34 7 Feb 16 2009 b", '-',
       "7 Feb 16 2009 b", 1024, kDate},
      {"owners with blanks", "-rw-r--r-- 1 D\\John von Neumann Domain Users 9 Jan 15 12:34 a", '-', "a", 9,
       kDate},
  };
  for (const auto& c : cases) {
    for (const char* end : {"\r\n", "\n", ""}) {
      const RemoteListing listing = ParseListing(c.line + end, kNow);
      ASSERT_EQ(listing.entries.size(), 1U) << c.name;
      const RemoteEntry& entry = listing.entries[0];
      EXPECT_EQ(entry.type, std::string(1, c.type)) << c.name;
      EXPECT_EQ(entry.name, c.entry) << c.name;
      EXPECT_EQ(entry.sizeBytes, c.size) << c.name;
      EXPECT_EQ(entry.dateText, c.date) << c.name;
      EXPECT_EQ(entry.sizeExact, c.exact) << c.name;
      const std::string_view name = c.name;
      const bool dos = name.starts_with("IIS") || name.starts_with("DOS");
      EXPECT_EQ(listing.format, dos ? ListingFormat::dosStyle : ListingFormat::unixStyle) << c.name;
    }
  }
}

RemoteEntry onlyEntry(const std::string& line) {
  const auto listing = ParseListing(line, kNow);
  EXPECT_EQ(listing.entries.size(), 1U) << line;
  return listing.entries.empty() ? RemoteEntry() : listing.entries[0];
}

TEST(ListingParser, ReadsEveryFormOfDate) {
  const std::pair<const char*, std::vector<const char*>> cases[] = {
      {"Jan 15 12:34",
       {"Jan 15 12:34:56", "15 Jan 12:34", "2026-01-15 12:34", "2026-01-15 12:34:56.000000000 +0100",
        "01-15 12:34", "1월 15일 12:34"}},
      {"Jan 15 21:05", {"Jan 15 9:05PM"}},
      {"Jan 15 01:05", {"Jan 15 1:05AM"}},
      {"Jan 15 1999", {"Jan 15 1999"}},
      {"Nov 1 1970", {"1.11.70 09.15"}},
      {"Dec 31 2025", {"31/12/2025 09:15"}},
      {"Jan 15 2009", {"2009-01-15 12:34", "2009-01-15 "}},
      {"Nov 14 09:15",
       {"2026-11-14 09.15", "14.11.2026 09.15.30", "14.11.2026  09.15", "14.11.2026 09:15",
        "14/11/2026 09.15", "Nov 14 2026 09:15"}},
      {"Nov 14 09:05", {"14/11/2026 9h05"}},
      {"Nov 14 2009", {"14.11.09 09.15", "2009/11/14 09:15", "14.11.2009"}},
      {"Mar 3 2009", {"03/03/2009 09:15"}},
      {"Mar 15 12:34", {"Mär 15 12:34"}},
      {"Jul 15 2009", {"15. čec 2009"}},
      {"Aug 14 09:15", {"14 août 09h15"}},
      {"Dec 15 2009", {"15. Dez 2009"}},
      {"Dec 15 12:34", {"Дек 15 12:34", "d\xE9\x63. 15 12:34"}},
      // Of unknown meaning.
      {"eanáir 15 12:34", {"eanáir 15 12:34"}},
      {"eanáir 15 2026", {"eanáir 15 2026 09:15"}},
      {"03/04/2009 09:15", {"03/04/2009 09:15"}},
      {"14/11/26 09:15", {"14/11/26 09:15"}},
  };
  for (const auto& [date, forms] : cases) {
    for (const char* form : forms) {
      const auto entry = onlyEntry(std::string("-rw-r--r-- 1 a b 1 ") + form + " a");
      EXPECT_EQ(entry.dateText, date) << form;
      EXPECT_EQ(entry.name, "a") << form;
    }
  }
  std::istringstream none(
      "Jan 15 12:34px|Jan 15 13:00PM|Jan 15 0:30AM|Jan 15 12:60|Jan 15 24:00|2026-13-15 12:34|"
      "2026-00-15 12:34|2026-01-32 12:34|2026-01-00 12:34|0/1/2026 09:15|32/1/2026 09:15|"
      "13/13/2026 09:15|14.11.1899 09:15|14.11.2100 09:15|14.11-2026 09:15|14..2026 09:15|"
      "14.11.026 09:15");
  for (std::string date; std::getline(none, date, '|');)
    EXPECT_TRUE(ParseListing("-rw-r--r-- 1 a b 1 " + date + " a", kNow).entries.empty()) << date;
}

TEST(ListingParser, ReadsEveryFormOfSize) {
  std::string sizes;
  for (const char* listed :
       {"5000000000", "99999999999999999999", "-2147483647", "1.5K", "3,4M", "2GiB", "9999999P"}) {
    const auto entry = onlyEntry(std::string("-rw-r--r-- 1 a b ") + listed + " Jan 15 12:34 a");
    EXPECT_EQ(entry.size, std::min<std::int64_t>(entry.sizeBytes, INT32_MAX)) << listed;
    sizes += (entry.sizeExact ? "" : "about ") + std::to_string(entry.sizeBytes) + "|";
  }
  EXPECT_EQ(sizes,
            "5000000000|about 9223372036854775807|2147483649|about 1536|about 3565158|about 2147483648|about "
            "9223372036854775807|");
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
    const auto entry = onlyEntry(c.line);
    EXPECT_EQ(entry.user, c.user) << c.line;
    EXPECT_EQ(entry.group, c.group) << c.line;
    EXPECT_EQ(entry.permissions, c.permissions) << c.line;
  }
}

TEST(ListingParser, FindsTheArrowOfALink) {
  const struct {
    const char *line, *name, *target;
  } cases[] = {{"lrwxrwxrwx 1 0 0 11 Jan 15 12:34 current -> releases/42", "current", "releases/42"},
               {"lrwxrwxrwx 1 0 0 6 Jan 15 12:34 a -> b -> target", "a -> b", "target"},
               {"lrwxrwxrwx 1 0 0 11 Jan 15 12:34 a -> b -> target", "a", "b -> target"},
               {"lrwxrwxrwx 1 0 0 1 Jan 15 12:34  -> b", " -> b", ""},
               {"lrwxrwxrwx 1 0 0 99999999999999999999 Jan 15 12:34 a -> b", "a", "b"},
               {"lrwxrwxrwx 1 0 0 3 Jan 15 12:34 no arrow", "no arrow", ""},
               {"lrwxrwxrwx 1 0 0 1 Jan 15 12:34 . -> b", ".", "b"},
               {"lrwxrwxrwx 1 0 0 1 Nov 14 2025 09:00 a/\\ -> b", "a/\\", "b"}};
  for (const auto& c : cases) {
    const auto entry = onlyEntry(c.line);
    EXPECT_EQ(entry.name, c.name) << c.line;
    EXPECT_EQ(entry.linkTarget, c.target) << c.line;
    EXPECT_EQ(entry.type, "l") << c.line;
  }
}

TEST(ListingParser, ResolvesAmbiguousLinesByTheOthers) {
  const struct {
    std::vector<std::string> dates;  // each with what stands before the name
    std::vector<std::string> meanings;
    const char* name;
  } cases[] = {
      {{"03/04/2026 00:15 ", "14/04/2009 09:15 "}, {"Apr 3 00:15", "Apr 14 2009"}, "a"},
      {{"04/14/2009 09:15 ", "03/04/2009 09:15 "}, {"Apr 14 2009", "Mar 4 2009"}, "a"},
      {{"03.04.2009 09:15 "}, {"Apr 3 2009"}, "a"},
      {{"03.04.2009 09:15 ", "04.14.2009 09:15 "}, {"Mar 4 2009", "Apr 14 2009"}, "a"},
      {{"14.04.2009 09:15 ", "04.14.2009 09:15 ", "03.04.2009 09:15 "},
       {"Apr 14 2009", "Apr 14 2009", "03.04.2009 09:15"},
       "a"},
      {{"Nov 14 2025 09:00 ", "Nov 15 2025 10:00 "}, {"Nov 14 2025", "Nov 15 2025"}, "a"},
      {{"Nov 14 2026 ", "Nov 15 2025 "}, {"Nov 14 2026", "Nov 15 2025"}, "09:00 a"},
      {{"Nov 14 2025 ", "Nov 15 09:00 "}, {"Nov 14 2025", "Nov 15 09:00"}, "09:00 a"},
  };
  for (const auto& c : cases) {
    std::string text;
    for (const auto& date : c.dates) text += "-rw-r--r-- 1 a b 1 " + date + c.name + "\n";
    // A name like a time decides nothing by itself: the line of the folder itself does.
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
        std::pair("03-04-09", "Mar 4 2009"),
        std::pair("15-01-09  10:30AM  1 c\n01-15-09", "03-04-09  10:30AM")}) {
    const auto listing =
        ParseListing("03-04-09  10:30AM  1 a\n" + std::string(settling) + "  10:30AM  1 b\n", kNow);
    EXPECT_EQ(listing.entries.at(0).dateText, date) << settling;
  }
}

TEST(ListingParser, SkipsNoiseAndKeepsTheLinesThatItCannotRead) {
  const std::string a = "-rw-r--r-- 1 a b 1 Jan 15 12:34 a\r\n",
                    d = "drwxr-xr-x 1 a b 1 Jan 15 12:34 sub\r\n";
  const std::string dLine = d.substr(0, d.size() - 2);
  constexpr auto kUnix = ListingFormat::unixStyle, kNeither = ListingFormat::neither;
  const struct {
    const char* name;
    std::string text;
    std::size_t entries;
    std::vector<std::string> unread{};
    ListingFormat format = kUnix;
  } cases[] = {
      {"empty", "", 0},
      {"total", "total 0\r\n", 0},
      {"blank lines and headings", "\r\n.:\r\nsub dir:\r\n", 0},
      {"total in German", "insgesamt 12\r\n", 0},
      {"names and sizes alone", "README 1024\r\nLICENSE 10\r\n", 0, {}, kNeither},
      {"no form at all", "0 07/11/09 A.TXT\r\nVolume full\r\n", 0, {}, kNeither},
      {"an invalid date", "-rw-r--r-- 1 a b 1 Jan 99 12:34 a\r\n", 0, {}, kNeither},
      {"a summary alone", "Welcome\r\n1 File(s)  1 bytes\r\n", 0, {}, kNeither},
      {"banner", "Welcome\r\ntotal 4\r\n" + a, 1, {"Welcome"}},
      {"path of the folder", "/www/pages\r\n" + a + "/www/lost\r\n", 1, {"/www/lost"}},
      {"note", a + "\r\nThe following are old\r\n" + a, 2, {"The following are old"}},
      {"note with a colon", a + "\r\nThe following:\r\n" + a, 2},
      {"date unknown", a + "-rw-r--r-- 1 a b 1 yesterday b:\r\n", 1, {"-rw-r--r-- 1 a b 1 yesterday b:"}},
      {"date too far",
       a + "-rw-r--r-- 1 a b g5 Jan 15 12:34 n\r\n",
       1,
       {"-rw-r--r-- 1 a b g5 Jan 15 12:34 n"}},
      {"half a line", a + "-rw-r--r-- 1 a b 1 Jan 15 12:3", 1, {"-rw-r--r-- 1 a b 1 Jan 15 12:3"}},
      {"mark unknown", a + "01-15-09  10:30AM  <GONE>  b\r\n", 1, {"01-15-09  10:30AM  <GONE>  b"}},
      {"ornament", a + "---------- Mod 5 Jan 15 2026 me\r\n", 1, {"---------- Mod 5 Jan 15 2026 me"}},
      {"bullet", a + "- [NEW] release 2 Jan 15 2026 is out\r\n", 1, {"- [NEW] release 2 Jan 15 2026 is out"}},
      {"number in front", a + "12 bottles 3 Jan 15 2026 left\r\n", 1, {"12 bottles 3 Jan 15 2026 left"}},
      {"dir", " Volume in drive C is X\r\n Directory of C:\\\r\n\r\n" + a + " 1 File(s)  1 bytes", 1},
      {"subfolder", a + d + "\r\nsub:\r\ntotal 1\r\n" + a + "odd\r\n", 2},
      {"subfolder by its path", a + d + "\r\n/www/sub:\r\n" + a, 2},
      {"subfolder of dir", a + d + "\r\n Directory of C:\\sub\r\n" + a, 2},
      {"some other folder", a + "\r\n./lost:\r\n" + d, 1, {dLine}},
      {"some other folder by its total", a + "\r\nlost:\r\ntotal 1\r\n" + d, 1, {dLine}},
      {"names and sizes", a + "README 1024\r\nnotes:\r\n", 1, {"README 1024", "notes:"}},
  };
  for (const auto& c : cases) {
    const auto listing = ParseListing(c.text, kNow);
    EXPECT_EQ(listing.entries.size(), c.entries) << c.name;
    EXPECT_EQ(listing.format, c.format) << c.name;
    EXPECT_EQ(listing.text, c.text) << c.name;
    EXPECT_EQ(listing.unread, c.unread) << c.name;
    EXPECT_EQ(listing.unreadCount, c.unread.size()) << c.name;
  }
  std::string many = a;
  for (std::size_t i = 0; i < RemoteListing::kMostUnread + 5; ++i) many += "odd\r\n";
  EXPECT_EQ(ParseListing(many, kNow).unread.size(), RemoteListing::kMostUnread);
  EXPECT_EQ(ParseListing(many, kNow).unreadCount, RemoteListing::kMostUnread + 5);
}

TEST(ListingDate, ReadsTheDatesOfListings) {
  int month = 0;
  for (const char* name :
       {"janv", "févr", "mär", "avr", "mai", "juin", "juil", "août", "sept", "okt", "marras", "dez"})
    EXPECT_EQ(MonthOfName(name), ++month) << name;
  const std::pair<const char*, std::vector<const char*>> cases[] = {
      {"2026-01-15 12:34:00", {"Jan 15 12:34", "jan 15 12:34"}},
      {"2026-01-15 12:34:56", {"Jan 15 12:34:56"}},
      {"2009-01-15 12:00:00", {"1 15 2009", "Jan 15 2009 and more"}},
      {"2009-01-05 12:00:00", {"Jan  5 2009", "Jan  5  2009"}},
      {"1969-12-31 12:00:00", {"Dec 31 1969"}},
      {"2008-02-29 12:00:00", {"Feb 29 2008"}},
      {"2026-12-31 10:00:00", {"Dec 31 10:00"}}};
  for (const auto& [meaning, texts] : cases) {
    for (const char* text : texts) EXPECT_EQ(GeneralDateText(ParseListingDate(text, kNow)), meaning) << text;
  }
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
