#include "platform/zip/ZipFormat.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/zip/ZipDirectory.h"
#include "platform/zip/ZipWalk.h"
#include "support/TemporaryFolder.h"

namespace quillmoor::zip {
namespace {

using quillmoor::testing::TemporaryFolder;

std::uint64_t at(const std::string& bytes, std::size_t offset, int size) {
  std::uint64_t value = 0;
  for (int i = size; i-- > 0;)
    value = value << 8 | static_cast<unsigned char>(bytes.at(offset + static_cast<std::size_t>(i)));
  return value;
}

Entry entryNamed(const std::string& name) {
  Entry entry;
  entry.name = name;
  entry.modifiedLocal = *MakeLocalDateTime({2026, 11, 24, 20, 15, 30, 0});
  entry.modified = 1'795'550'130;
  return entry;
}

/// Extra field 0x0001 of a central header; "" when there is none. It comes first.
std::string zip64Of(const std::string& header) {
  const std::size_t extra = kCentralHeaderSize + at(header, 28, 2);
  return at(header, extra, 2) == 1 ? header.substr(extra + 4, at(header, extra + 2, 2)) : "";
}

TEST(ZipFormat, TakesTheWideFieldJustForWhatDoesNotFit) {
  struct Case {
    const char* name;
    std::uint64_t size, packed, offset;
    std::uint32_t disk;
    std::size_t wideBytes;
  };
  constexpr std::uint64_t k4 = 0xFFFFFFFF;
  for (const Case& c :
       {Case{"all fit by one", k4 - 1, k4 - 1, k4 - 1, 0xFFFE, 0}, Case{"size", k4, 5, 6, 0, 8},
        Case{"packed size", 5, k4, 6, 0, 8}, Case{"offset", 5, 5, k4, 0, 8}, Case{"disk", 5, 5, 6, 0xFFFF, 4},
        Case{"far disk", 5, 5, 6, 0x12345, 4}, Case{"all", k4 + 1, k4 + 2, k4 + 3, 0x10000, 28}}) {
    Entry entry = entryNamed("a");
    entry.size = c.size;
    entry.packedSize = c.packed;
    entry.offset = c.offset;
    entry.disk = c.disk;
    const std::string header = centralHeader(entry);
    const std::string wide = zip64Of(header);
    EXPECT_EQ(wide.size(), c.wideBytes) << c.name;
    EXPECT_EQ(at(header, 6, 2), c.wideBytes > 0 ? 45U : 20U) << c.name << ": version needed";
    // Read back as a reader does: marks ask for the wide values, in the order of the note.
    std::size_t next = 0;
    const auto value = [&](std::size_t offset, int size, int wideSize) {
      const std::uint64_t narrow = at(header, offset, size);
      if (narrow != (size == 2 ? 0xFFFFU : k4)) return narrow;
      next += static_cast<std::size_t>(wideSize);
      return at(wide, next - static_cast<std::size_t>(wideSize), wideSize);
    };
    EXPECT_EQ(value(24, 4, 8), c.size) << c.name;
    EXPECT_EQ(value(20, 4, 8), c.packed) << c.name;
    EXPECT_EQ(value(42, 4, 8), c.offset) << c.name;
    EXPECT_EQ(value(34, 2, 4), c.disk) << c.name;
  }
}

TEST(ZipFormat, TakesTheWideEndJustWhenAValueAsksForIt) {
  End fits;
  fits.disk = fits.directoryDisk = 0xFFFE;
  fits.entries = fits.entriesOnDisk = 0xFFFE;
  fits.directorySize = fits.directoryOffset = 0xFFFFFFFE;
  EXPECT_EQ(endRecords(fits).size(), kEndRecordSize);
  const auto expectWide = [&](auto field) {
    End wide = fits;
    ++(wide.*field);
    EXPECT_EQ(endRecords(wide).size(), kLongestEnd);
  };
  for (const auto field : {&End::disk, &End::directoryDisk}) expectWide(field);
  for (const auto field : {&End::entriesOnDisk, &End::entries, &End::directorySize, &End::directoryOffset})
    expectWide(field);

  End end;
  end.disk = 70'000;
  end.directoryDisk = 69'999;
  end.entries = 70'001;
  end.entriesOnDisk = 3;
  end.directorySize = 0x1'0000'0001;
  end.directoryOffset = 77;
  end.endOffset = 0x2'0000'0000;
  const std::string records = endRecords(end);
  EXPECT_EQ(at(records, 4, 8), 44U);
  EXPECT_EQ(at(records, 16, 4), 70'000U);
  EXPECT_EQ(at(records, 20, 4), 69'999U);
  EXPECT_EQ(at(records, 24, 8), 3U);
  EXPECT_EQ(at(records, 32, 8), 70'001U);
  EXPECT_EQ(at(records, 40, 8), 0x1'0000'0001U);
  EXPECT_EQ(at(records, 48, 8), 77U);
  EXPECT_EQ(at(records, 56 + 4, 4), 70'000U) << "locator: segment of the record";
  EXPECT_EQ(at(records, 56 + 8, 8), 0x2'0000'0000U) << "locator: its offset";
  EXPECT_EQ(at(records, 56 + 16, 4), 70'001U) << "locator: how many segments";
  EXPECT_EQ(at(records, 76 + 4, 2), 0xFFFFU);
  EXPECT_EQ(at(records, 76 + 16, 4), 77U) << "what fits stays in the old record";
}

TEST(ZipFormat, WritesTheLocalHeaderWithTheSameLengthOnceItsSizesAreKnown) {
  for (const bool wide : {false, true}) {
    Entry entry = entryNamed("large");
    entry.zip64Local = wide;
    const std::size_t before = localHeader(entry).size();
    entry.size = wide ? 0x1'2345'6789 : 0x1234'5678;
    entry.packedSize = wide ? 0x1'0000'0000 : 5;
    const std::string header = localHeader(entry);
    EXPECT_EQ(header.size(), before);
    EXPECT_EQ(at(header, 22, 4), wide ? 0xFFFFFFFF : 0x1234'5678U);
    if (wide) {
      EXPECT_EQ(at(header, 30 + 5 + 4, 8), 0x1'2345'6789U);
    }
  }
}

TEST(ZipFormat, MarksNamesAsUtf8OnlyWhenTheyAre) {
  struct Case {
    std::string_view name;
    bool marked;
  };
  for (const Case& c :
       {Case{"plain", false}, Case{"\xC3\xA4.txt", true}, Case{"\xE6\x97\xA5\xE6\x9C\xAC", true},
        Case{"\xF0\x9F\x98\x80", true}, Case{"\xE4.txt", false}, Case{"cut \xC3", false},
        Case{"overlong \xC0\xAF", false}, Case{"overlong \xE0\x80\xAF", false},
        Case{"overlong \xF0\x80\x80\xAF", false}, Case{"surrogate \xED\xA0\x80", false},
        Case{"beyond \xF4\x90\x80\x80", false}, Case{"beyond \xF5\x80\x80\x80", false},
        Case{"alone \x80", false}, Case{"last \xF4\x8F\xBF\xBF", true}}) {
    Entry entry = entryNamed(std::string(c.name));
    EXPECT_EQ(at(localHeader(entry), 6, 2) == kFlagUtf8, c.marked) << c.name;
    EXPECT_EQ(at(centralHeader(entry), 8, 2) == kFlagUtf8, c.marked) << c.name;
  }
}

TEST(ZipFormat, KeepsDosTimesWithinTheirRange) {
  struct Case {
    LocalDateTimeParts time;
    std::uint32_t dos;
  };
  const auto dos = [](unsigned year, unsigned month, unsigned day, unsigned hour, unsigned minute,
                      unsigned second) {
    return ((year - 1980) << 9 | month << 5 | day) << 16 | (hour << 11 | minute << 5 | second / 2);
  };
  for (const Case& c : {Case{{1970, 1, 1, 0, 0, 0, 0}, dos(1980, 1, 1, 0, 0, 0)},
                        Case{{1979, 12, 31, 23, 59, 59, 0}, dos(1980, 1, 1, 0, 0, 0)},
                        Case{{1980, 1, 1, 0, 0, 2, 0}, dos(1980, 1, 1, 0, 0, 2)},
                        Case{{2026, 11, 24, 20, 15, 31, 0}, dos(2026, 11, 24, 20, 15, 30)},
                        Case{{2107, 12, 31, 23, 59, 58, 0}, dos(2107, 12, 31, 23, 59, 58)},
                        Case{{2108, 1, 1, 0, 0, 0, 0}, dos(2107, 12, 31, 23, 59, 58)}})
    EXPECT_EQ(dosTime(*MakeLocalDateTime(c.time)), c.dos) << c.time.year;
}

TEST(ZipFormat, LeavesATimeBeyondTheFieldToTheDosOne) {
  Entry entry = entryNamed("a");
  EXPECT_EQ(at(localHeader(entry), 28, 2), 9U);
  for (const std::int64_t time : {std::int64_t{0x80000000}, std::int64_t{-0x80000001LL}}) {
    entry.modified = time;
    EXPECT_EQ(at(localHeader(entry), 28, 2), 0U) << time;
  }
}

TEST(ZipDirectory, GivesBackWhatOutgrewMemoryInItsOrder) {
  const TemporaryFolder folder;
  const std::string spool = (folder / "spool").string();
  for (const std::size_t memory : {std::size_t{1}, std::size_t{100'000}, std::size_t{100'000'000}}) {
    Directory directory(spool, memory);
    constexpr int kCount = 5000;
    for (int i = 0; i < kCount; ++i)
      directory.add(centralHeader(
          entryNamed(std::string(static_cast<std::size_t>(i % 300 + 1), 'x') + std::to_string(i))));
    EXPECT_EQ(pathKind(spool).has_value(), memory < 100'000'000);
    int next = 0;
    directory.forEach([&](std::string_view header) {
      const auto i = static_cast<std::size_t>(next);
      EXPECT_EQ(header, centralHeader(entryNamed(std::string(i % 300 + 1, 'x') + std::to_string(i))));
      ++next;
    });
    EXPECT_EQ(next, kCount);
    EXPECT_EQ(directory.entries(), static_cast<std::uint64_t>(kCount));
  }
  EXPECT_FALSE(pathKind(spool).has_value());
}

TEST(ZipWalk, MatchesNamesByTheirPattern) {
  struct Case {
    const char *pattern, *name;
    bool matches;
  };
  for (const Case& c :
       {Case{"*", "", true}, Case{"*", ".htaccess", true}, Case{"*.txt", "a.txt", true},
        Case{"*.txt", "a.txt2", false}, Case{"a*b*c", "aXbYbZc", true}, Case{"a*b*c", "aXbYc2", false},
        Case{"?", "a", true}, Case{"?", "", false}, Case{"?", "ab", false}, Case{"a?c", "abc", true},
        Case{"", "a", false}, Case{"**", "a", true}, Case{"*aab", "aaaaab", true}})
    EXPECT_EQ(matchesWildcard(c.pattern, c.name), c.matches) << c.pattern << " " << c.name;
}

TEST(ZipWalk, TakesAPatternApartWhateverItsSeparators) {
  const auto folderOf = [](std::string_view pattern) {
    const auto path = splitWildcardPath(pattern);
    std::string folder = path ? path->folder + "|" + path->names : "none";
    std::replace(folder.begin(), folder.end(), '\\', '/');
    return folder;
  };
  EXPECT_EQ(folderOf("/a/b/*"), "/a/b/|*");
  EXPECT_EQ(folderOf("/a/b//*"), "/a/b/|*");
  EXPECT_EQ(folderOf("/a/b///*.txt"), "/a/b/|*.txt");
  EXPECT_EQ(folderOf("//*"), "/|*");
  EXPECT_EQ(folderOf("*"), "./|*");
  EXPECT_EQ(folderOf("/a/b/"), "none");
  EXPECT_EQ(folderOf(""), "none");
}

}  // namespace
}  // namespace quillmoor::zip
