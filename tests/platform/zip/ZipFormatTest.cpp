// The parts that an archive is made of: headers, the directory, the walk through folders, encryption.
#include "platform/zip/ZipFormat.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/files/LocalPath.h"
#include "platform/zip/ZipCrypto.h"
#include "platform/zip/ZipDirectory.h"
#include "platform/zip/ZipWalk.h"
#include "support/TemporaryFolder.h"

namespace quillmoor::zip {
namespace {

using quillmoor::testing::TemporaryFolder;

/// A number as an archive holds it: in so many bytes, the lowest first.
std::string number(std::uint64_t value, int size) {
  std::string bytes;
  for (int i = 0; i < size; ++i) bytes += static_cast<char>(value >> (8 * i) & 0xFF);
  return bytes;
}

Entry entryNamed(const std::string& name) {
  Entry entry;
  entry.name = name;
  entry.modifiedLocal = *MakeLocalDateTime({2026, 11, 24, 20, 15, 30, 0});
  entry.modified = 1'795'550'130;
  return entry;
}

TEST(ZipFormat, UsesZip64OnlyForValuesThatDoNotFit) {
  constexpr std::uint64_t k4 = 0xFFFFFFFF;
  const struct {
    const char* name;
    std::uint64_t size, packed, offset;
    std::uint32_t disk;
    std::string field;  // content of the zip64 extra field
  } cases[] = {
      {"all fit by one", k4 - 1, k4 - 1, k4 - 1, 0xFFFE, ""},
      {"size", k4, 5, 6, 0, number(k4, 8)},
      {"packed size", 5, k4, 6, 0, number(k4, 8)},
      {"offset", 5, 5, k4, 0, number(k4, 8)},
      {"disk", 5, 5, 6, 0xFFFF, number(0xFFFF, 4)},
      {"all", k4 + 1, k4 + 2, k4 + 3, 0x12345,
       number(k4 + 1, 8) + number(k4 + 2, 8) + number(k4 + 3, 8) + number(0x12345, 4)},
  };
  for (const auto& c : cases) {
    Entry entry = entryNamed("a");
    entry.size = c.size;
    entry.packedSize = c.packed;
    entry.offset = c.offset;
    entry.disk = c.disk;
    const std::string header = centralHeader(entry), extra = header.substr(kCentralHeaderSize + 1);
    EXPECT_EQ(extra.starts_with(number(1, 2) + number(c.field.size(), 2) + c.field), c.field != "") << c.name;
    EXPECT_EQ(header.substr(6, 2), number(c.field == "" ? 20 : 45, 2)) << c.name << ": version needed";
    EXPECT_EQ(header.substr(20, 8), number(std::min(c.packed, k4), 4) + number(std::min(c.size, k4), 4));
    EXPECT_EQ(header.substr(34, 2), number(std::min<std::uint64_t>(c.disk, 0xFFFF), 2)) << c.name;
    EXPECT_EQ(header.substr(42, 4), number(std::min(c.offset, k4), 4)) << c.name;
  }
}

TEST(ZipFormat, UsesZip64EndRecordsOnlyForValuesThatDoNotFit) {
  const End fits{0xFFFE, 0xFFFE, 0xFFFE, 0xFFFE, 0xFFFFFFFE, 0xFFFFFFFE, 0};
  EXPECT_EQ(endRecords(fits).size(), kEndRecordSize);
  const auto expectWide = [&](auto field) {
    End wide = fits;
    ++(wide.*field);
    EXPECT_EQ(endRecords(wide).size(), kLongestEnd);
  };
  for (const auto field : {&End::disk, &End::directoryDisk}) expectWide(field);
  for (const auto field : {&End::entriesOnDisk, &End::entries, &End::directorySize, &End::directoryOffset})
    expectWide(field);

  const std::string values = number(70'000, 4) + number(69'999, 4) + number(3, 8) + number(70'001, 8) +
                             number(0x1'0000'0001, 8) + number(77, 8);
  const std::string locator = number(70'000, 4) + number(0x2'0000'0000, 8) + number(70'001, 4);
  const std::string records = endRecords({70'000, 69'999, 3, 70'001, 0x1'0000'0001, 77, 0x2'0000'0000});
  EXPECT_EQ(records.substr(4, 8), number(44, 8)) << "size of the rest of the record";
  EXPECT_EQ(records.substr(16, 40), values);
  EXPECT_EQ(records.substr(56 + 4, 16), locator);
  EXPECT_EQ(records.substr(76 + 4, 2), number(0xFFFF, 2));
  EXPECT_EQ(records.substr(76 + 16, 4), number(77, 4)) << "what fits stays in the old record";
}

TEST(ZipFormat, KeepsTheLengthOfTheLocalHeaderOnceItsSizesAreKnown) {
  Entry entry = entryNamed("large");
  entry.zip64Local = true;
  const std::size_t before = localHeader(entry).size();
  entry.size = 0x1'2345'6789;
  entry.packedSize = 0x1'0000'0000;
  const std::string header = localHeader(entry);
  EXPECT_EQ(header.size(), before);
  EXPECT_EQ(header.substr(18, 8), std::string(8, '\xFF'));
  EXPECT_EQ(header.substr(30 + 5 + 4, 16), number(0x1'2345'6789, 8) + number(0x1'0000'0000, 8));
}

TEST(ZipFormat, FlagsNamesAsUtf8OnlyWhenTheyAre) {
  const auto flags = [](const char* name) { return centralHeader(entryNamed(name)).substr(8, 2); };
  for (const char* name : {"\xC3\xA4.txt", "\xE6\x97\xA5", "\xF0\x9F\x98\x80", "last \xF4\x8F\xBF\xBF"})
    EXPECT_EQ(flags(name), number(kFlagUtf8, 2)) << name;
  for (const char* name : {"plain", "\xE4.txt", "cut \xC3", "overlong \xC0\xAF", "overlong \xE0\x80\xAF",
                           "overlong \xF0\x80\x80\xAF", "surrogate \xED\xA0\x80", "beyond \xF4\x90\x80\x80",
                           "beyond \xF5\x80\x80\x80", "alone \x80"})
    EXPECT_EQ(flags(name), number(0, 2)) << name;
}

TEST(ZipFormat, KeepsTimesWithinTheRangeOfTheirFields) {
  const std::pair<LocalDateTimeParts, std::uint32_t> cases[] = {
      {{1979, 12, 31, 23, 59, 59, 0}, 0x0021'0000}, {{1980, 1, 1, 0, 0, 2, 0}, 0x0021'0001},
      {{2026, 11, 24, 20, 15, 31, 0}, 0x5D78'A1EF}, {{2107, 12, 31, 23, 59, 58, 0}, 0xFF9F'BF7D},
      {{2108, 1, 1, 0, 0, 0, 0}, 0xFF9F'BF7D},
  };
  for (const auto& [time, dos] : cases) EXPECT_EQ(dosTime(*MakeLocalDateTime(time)), dos) << time.year;

  Entry entry = entryNamed("a");
  for (const std::int64_t time : {0x7FFF'FFFFLL, -0x8000'0000LL, 0x8000'0000LL, -0x8000'0001LL}) {
    entry.modified = time;
    const bool fits = time == static_cast<std::int32_t>(time);
    EXPECT_EQ(localHeader(entry).substr(28, 2), number(fits ? 9 : 0, 2)) << time;
  }
}

TEST(ZipDirectory, ReturnsWhatOutgrewMemoryInItsOrder) {
  const TemporaryFolder folder;
  const std::string spool = (folder / "spool").string();
  const auto header = [](std::size_t i) {
    return centralHeader(entryNamed(std::string(i % 300 + 1, 'x') + std::to_string(i)));
  };
  for (const std::size_t memory : {std::size_t{1}, std::size_t{100'000}, std::size_t{100'000'000}}) {
    Directory directory(spool, memory);
    constexpr std::size_t kCount = 5000;
    for (std::size_t i = 0; i < kCount; ++i) directory.add(header(i));
    EXPECT_EQ(pathKind(spool).has_value(), memory < 100'000'000);
    std::size_t next = 0;
    directory.forEach([&](std::string_view found) { EXPECT_EQ(found, header(next++)); });
    EXPECT_EQ(next, kCount);
    EXPECT_EQ(directory.entries(), kCount);
  }
  EXPECT_FALSE(pathKind(spool).has_value());
}

TEST(ZipWalk, MatchesNamesByTheirPattern) {
  for (const auto& [pattern, name] :
       {std::pair{"*", ""}, std::pair{"*", ".htaccess"}, std::pair{"*.txt", "a.txt"},
        std::pair{"a*b*c", "aXbYbZc"}, std::pair{"a?c", "abc"}, std::pair{"**", "a"},
        std::pair{"*aab", "aaaaab"}})
    EXPECT_TRUE(matchesWildcard(pattern, name)) << pattern << " " << name;
  for (const auto& [pattern, name] : {std::pair{"*.txt", "a.txt2"}, std::pair{"a*b*c", "aXbYc2"},
                                      std::pair{"?", ""}, std::pair{"?", "ab"}, std::pair{"", "a"}})
    EXPECT_FALSE(matchesWildcard(pattern, name)) << pattern << " " << name;
}

TEST(ZipWalk, TakesAPatternForItsFolderAndNames) {
  const std::string slash(1, kLocalSeparator);
  for (const auto& [pattern, folder] :
       {std::pair{"/a///*", "/a"}, std::pair{"///*", ""}, std::pair{"*", "."}})
    EXPECT_EQ(splitWildcardPath(pattern).value().folder, folder + slash) << pattern;
}

std::vector<std::uint8_t> bytesOf(std::string_view hex) {
  std::vector<std::uint8_t> bytes;
  for (std::size_t i = 0; i < hex.size(); i += 2)
    bytes.push_back(static_cast<std::uint8_t>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16)));
  return bytes;
}

// An entry that another program encrypted.
constexpr std::string_view kPlain = "The quick brown fox jumps over the lazy dog, twice.";
constexpr std::string_view kPassword = "correct horse";
constexpr std::string_view kSalt = "5fc7bfaad108261436cb085db26224b5";
constexpr std::string_view kVerifier = "f697";
constexpr std::string_view kEncrypted =
    "f701a85a46719a5bc2634b24b592b0ddb9d5f684234358687e06fdfb4d4407472b932a14103d674688b176adb3f21e91d3c3e4";
constexpr std::string_view kCode = "ef6a60029274797035b5";

TEST(ZipCrypto, EncryptsAsOtherProgramsDoInPiecesOfAnySize) {
  Salt salt;
  std::ranges::copy(bytesOf(kSalt), salt.begin());
  for (std::size_t piece = 1; piece <= kPlain.size(); ++piece) {
    AesEntry aes(kPassword, salt);
    std::vector<std::uint8_t> bytes(kPlain.begin(), kPlain.end());
    for (std::size_t at = 0; at < bytes.size(); at += piece)
      aes.encrypt(std::span(bytes).subspan(at, std::min(piece, bytes.size() - at)));
    EXPECT_EQ(bytes, bytesOf(kEncrypted)) << piece;
    EXPECT_TRUE(std::ranges::equal(aes.verifier(), bytesOf(kVerifier)));
    EXPECT_TRUE(std::ranges::equal(aes.code(), bytesOf(kCode)));
  }
}

TEST(ZipCrypto, NeverUsesASaltTwice) {
  const Salt first = freshSalt();
  EXPECT_NE(first, freshSalt());
  EXPECT_NE(first, Salt{});
}

}  // namespace
}  // namespace quillmoor::zip
