// Listings as servers write them, and the dates in them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
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
};

const std::vector<LineCase>& lineCases() {
  static const std::vector<LineCase> cases = {
      {"vsftpd", "-rw-r--r--    1 0        0            1024 Jan 15 12:34 index.html", '-', "index.html",
       1024, "Jan 15 12:34"},
      {"ProFTPD", "-rw-r--r--   1 www-data www-data     1024 Jan 15 12:34 index.html", '-', "index.html",
       1024, "Jan 15 12:34"},
      {"no group", "-rw-r--r--  1 joe  1024 Jan 15 12:34 a", '-', "a", 1024, "Jan 15 12:34"},
      {"folder", "drwxr-xr-x 1 ftp ftp              0 Jan 15  2009 images", 'd', "images", 0, "Jan 15 2009"},
      {"day of one digit", "-rw-r--r-- 1 a b 7 Jan  5  2009 a", '-', "a", 7, "Jan 5 2009"},
      {"NetWare", "- [RWCEAFMS] joe      1024 Jan 15 12:34 a", '-', "a", 1024, "Jan 15 12:34"},
      {"NetWare folder", "d [R----F--] joe       512 Jan 15 12:34 sys", 'd', "sys", 512, "Jan 15 12:34"},
      {"ACL mark", "drwxr-xr-x+  5 a b 4096 Jan 15 12:34 acl", 'd', "acl", 4096, "Jan 15 12:34"},
      {"SELinux mark", "-rw-r--r--.  1 a b 1 Jan 15 12:34 se", '-', "se", 1, "Jan 15 12:34"},
      {"device", "crw-rw-rw-   1 root root   1,   3 Jan 15 12:34 null", 'c', "null", 0, "Jan 15 12:34"},
      {"device, glued", "brw-rw----   1 root disk   8,1 Jan 15 12:34 sda1", 'b', "sda1", 0, "Jan 15 12:34"},
      {"glued link count", "drwxr-xr-x1000 user     group        4096 Jan 15 12:34 wide", 'd', "wide", 4096,
       "Jan 15 12:34"},
      {"group with a blank", "-rw-r--r-- 1 joe Domain Users 9 Jan 15 12:34 a", '-', "a", 9, "Jan 15 12:34"},
      {"owner like a date", "-rw-r--r-- 1 Jan 15 1024 Jan 15 12:34 a", '-', "a", 1024, "Jan 15 12:34"},
      {"beyond 2^32", "-rw-r--r-- 1 a b 5000000000 Jan 15 12:34 iso", '-', "iso", 5000000000, "Jan 15 12:34"},
      {"beyond 2^63", "-rw-r--r-- 1 a b 99999999999999999999 Jan 15 12:34 x", '-', "x", INT64_MAX,
       "Jan 15 12:34"},
      {"owner like a date of this century", "-rw-r--r-- 1 jan 10 2048 Feb 3 12:34 a", '-', "a", 2048,
       "Feb 3 12:34"},
      {"NetWare, glued", "d[RWCEAFMS]  joe  512 Jan 15 12:34 sys", 'd', "sys", 512, "Jan 15 12:34"},
      {"leading blank", " -rw-r--r-- 1 a b 1 Jan 15 12:34 a", '-', "a", 1, "Jan 15 12:34"},
      {"counted in 32 bits", "-rw-r--r-- 1 a b -2147483647 Jan 15 12:34 x", '-', "x", 2147483649,
       "Jan 15 12:34"},
      {"thousands", "-rw-r--r-- 1 a b 1,024 Jan 15 12:34 x", '-', "x", 1024, "Jan 15 12:34"},
      {"seconds", "-rw-r--r-- 1 a b 1 Jan 15 12:34:56 a", '-', "a", 1, "Jan 15 12:34"},
      {"afternoon", "-rw-r--r-- 1 a b 1 Jan 15 9:05PM a", '-', "a", 1, "Jan 15 21:05"},
      {"hour of one digit", "-rw-r--r-- 1 a b 1 Jan 15 9:05 a", '-', "a", 1, "Jan 15 09:05"},
      {"day first", "-rw-r--r-- 1 a b 1 15 Jan 12:34 a", '-', "a", 1, "Jan 15 12:34"},
      {"day first, year", "-rw-r--r-- 1 a b 1 15 Jan 2009 a", '-', "a", 1, "Jan 15 2009"},
      {"ISO, old", "-rw-r--r-- 1 a b 1 2009-01-15 12:34 a", '-', "a", 1, "Jan 15 2009"},
      {"ISO, this year", "-rw-r--r-- 1 a b 1 2026-01-15 12:34 a", '-', "a", 1, "Jan 15 12:34"},
      {"full ISO", "-rw-r--r-- 1 a b 1 2026-01-15 12:34:56.000000000 +0100 a", '-', "a", 1, "Jan 15 12:34"},
      {"ISO, short, old", "-rw-r--r-- 1 a b 1 2009-01-15  a", '-', "a", 1, "Jan 15 2009"},
      {"ISO, short, old, unpadded", "-rw-r--r-- 1 a b 1 2009-01-15 a", '-', "a", 1, "Jan 15 2009"},
      {"ISO, short, recent", "-rw-r--r-- 1 a b 1 01-15 12:34 a", '-', "a", 1, "Jan 15 12:34"},
      {"German", "-rw-r--r-- 1 a b 1 Mär 15 12:34 a", '-', "a", 1, "Mar 15 12:34"},
      {"German, day first", "-rw-r--r-- 1 a b 1 15. Dez 2009 a", '-', "a", 1, "Dec 15 2009"},
      {"French", "-rw-r--r-- 1 a b 1 août 15 12:34 a", '-', "a", 1, "Aug 15 12:34"},
      {"Russian", "-rw-r--r-- 1 a b 1 янв 15 12:34 a", '-', "a", 1, "Jan 15 12:34"},
      {"Russian, capital", "-rw-r--r-- 1 a b 1 Дек 15 12:34 a", '-', "a", 1, "Dec 15 12:34"},
      {"French in Latin-1", "-rw-r--r-- 1 a b 1 d\xE9\x63. 15 12:34 a", '-', "a", 1, "Dec 15 12:34"},
      {"Czech, day first", "-rw-r--r-- 1 a b 1 15. čec 2009 a", '-', "a", 1, "Jul 15 2009"},
      {"Korean", "-rw-r--r-- 1 a b 1 1월 15일 12:34 a", '-', "a", 1, "Jan 15 12:34"},
      {"a language unknown here", "-rw-r--r-- 1 a b 1 eanáir 15 12:34 a", '-', "a", 1, "eanáir 15 12:34"},
      {"East Asian", "-rw-r--r-- 1 a b 1 12月 15 12:34 a", '-', "a", 1, "Dec 15 12:34"},
      {"name with blanks", "-rw-r--r-- 1 a b 1 Jan 15 12:34   two  blanks ", '-', "  two  blanks ", 1,
       "Jan 15 12:34"},
      {"name like a date", "-rw-r--r-- 1 a b 1 Jan 15 12:34 1 Feb 3 2001 x", '-', "1 Feb 3 2001 x", 1,
       "Jan 15 12:34"},
      {"name with signs", "-rw-r--r-- 1 a b 1 Jan 15 12:34 a'\"[b]\\~", '-', "a'\"[b]\\~", 1, "Jan 15 12:34"},
      {"name in Latin-1", "-rw-r--r-- 1 a b 1 Jan 15 12:34 gr\xFC\xDF", '-', "gr\xFC\xDF", 1, "Jan 15 12:34"},
      {"name with a NUL", "-rw-r--r-- 1 a b 1 Jan 15 12:34 a\0b"s, '-', "a\0b"s, 1, "Jan 15 12:34"},
      {"CR CR", "-rw-r--r-- 1 a b 1 Jan 15 12:34 a\r", '-', "a", 1, "Jan 15 12:34"},
      {"IIS", "01-15-09  10:30AM                 1024 index.html", '-', "index.html", 1024, "Jan 15 2009"},
      {"IIS folder", "01-15-09  10:30AM       <DIR>          images", 'd', "images", 0, "Jan 15 2009"},
      {"IIS, this year", "01-15-2026  10:30PM                 1024 a", '-', "a", 1024, "Jan 15 22:30"},
      {"IIS, noon and midnight", "01-15-26  12:05AM                 1 a", '-', "a", 1, "Jan 15 00:05"},
      {"IIS, 24 hours", "01-15-26  22:30                 1024 a b", '-', "a b", 1024, "Jan 15 22:30"},
      {"IIS, last century", "01-15-99  10:30AM                 1 a", '-', "a", 1, "Jan 15 1999"},
      {"IIS, thousands", "01-15-09  10:30AM            1,234,567 a", '-', "a", 1234567, "Jan 15 2009"},
      {"IIS folder with leading blank", "01-15-09  10:30AM       <DIR>           images", 'd', " images", 0,
       "Jan 15 2009"},
      {"DOS, day first", "15-01-09  10:30                 1 a", '-', "a", 1, "Jan 15 2009"},
      {"DOS, ISO", "2009-01-15  10:30AM       <DIR>          a", 'd', "a", 0, "Jan 15 2009"},
      {"IIS junction", "01-15-09  10:30AM       <JUNCTION>     j", 'l', "j", 0, "Jan 15 2009"},
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
      EXPECT_EQ(listing.format, std::isdigit(static_cast<unsigned char>(c.line[0]))
                                    ? ListingFormat::dosStyle
                                    : ListingFormat::unixStyle)
          << c.name;
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
               {"lrwxrwxrwx 1 0 0 3 Jan 15 12:34 no arrow", "no arrow", ""}};
  for (const auto& c : cases) {
    const auto listing = ParseListing(c.line, kNow);
    ASSERT_EQ(listing.entries.size(), 1U) << c.line;
    EXPECT_EQ(listing.entries[0].name, c.name) << c.line;
    EXPECT_EQ(listing.entries[0].linkTarget, c.target) << c.line;
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
      {"banner before lines", "Welcome\r\ntotal 4\r\n-rw-r--r-- 1 a b 1 Jan 15 12:34 a\r\n", 1,
       ListingFormat::unixStyle},
      {"total in German", "insgesamt 12\r\n", 0, ListingFormat::unixStyle},
      {"headings between lines",
       "-rw-r--r-- 1 a b 1 Jan 15 12:34 a\nfolder:\n-rw-r--r-- 1 a b 1 Jan 15 12:34 b\n", 2,
       ListingFormat::unixStyle},
      {"recursive",
       ".:\ntotal 4\ndrwxr-xr-x 1 a b 1 Jan 15 12:34 sub\n-rw-r--r-- 1 a b 1 Jan 15 12:34 a\n\n"
       "./sub:\ntotal 4\n-rw-r--r-- 1 a b 1 Jan 15 12:34 inner\n",
       2, ListingFormat::unixStyle},
      {"neither", "0 07/11/09 A.TXT\r\nVolume full\r\n", 0, ListingFormat::neither},
      {"half lines", "-rw-r--r--\r\n-rw-r--r-- 1 a b\r\n-rw-r--r-- 1 a b 1 Jan 15 12:34\r\n", 0,
       ListingFormat::neither},
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

TEST(ListingParser, SurvivesMutilatedLines) {
  std::mt19937 random(12);
  const auto& cases = lineCases();
  for (int round = 0; round < 20'000; ++round) {
    std::string line = cases[random() % cases.size()].line;
    for (unsigned changes = 1 + random() % 4; changes > 0 && !line.empty(); --changes) {
      const std::size_t at = random() % line.size();
      if (random() % 3 == 0) {
        line.erase(at, 1 + random() % 5);
      } else {
        line[at] = static_cast<char>(random() % 256);
      }
    }
    for (const RemoteEntry& entry : ParseListing(line, kNow).entries) {
      EXPECT_LE(entry.name.size() + entry.linkTarget.size(), line.size());
      EXPECT_FALSE(entry.name.empty());
      ParseListingDate(entry.dateText, kNow);
    }
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
  for (const char* text : {"",
                           "Jan",
                           "Jan 15",
                           "Jan   5 2009",
                           "01-15-09 10:30AM",
                           "Feb 30 2009",
                           "Feb 29 2009",
                           "Jan x 2009",
                           "Jan 15 20x9",
                           "Jan 15 24:00",
                           "Jan 15 12:60",
                           "Jan 0 2009",
                           "Foo 15 2009",
                           "13 15 2009",
                           "Jan 15 :",
                           "Jan 15 12:",
                           "Jan 15 :34",
                           "Jan 15 12:34:",
                           "Jan 15 12:34:60",
                           "Jan 15 012:34",
                           "Jan 015 2009",
                           "Jan 15 09",
                           "Jan 15 2009.",
                           "Mär 15 2009",
                           "Jan -5 2009",
                           " Jan 15 2009"}) {
    EXPECT_EQ(ParseListingDate(text, kNow), kNow) << text;
  }
}

}  // namespace
}  // namespace quillmoor
