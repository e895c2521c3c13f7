// The records of active connections, whose size depends on the age of the system.
#include "platform/network/RasConnections.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

namespace quillmoor {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
constexpr std::uint32_t kInvalidSize = 632, kBufferTooSmall = 603;

/// A system that knows one size of record and has some connections.
struct FakeSystem {
  std::uint32_t knownSize = 0;
  std::size_t handleBytes = 4;
  std::uint32_t connections = 0;
  std::vector<std::uint32_t> askedSizes{};

  std::uint32_t answer(std::byte* records, std::uint32_t& bytes, std::uint32_t& count) {
    std::uint32_t size = 0;
    std::memcpy(&size, records, sizeof size);
    askedSizes.push_back(size);
    if (size != knownSize) return kInvalidSize;
    const std::uint32_t room = bytes / size;
    bytes = connections * size;
    if (room < connections) return kBufferTooSmall;  // without the count, which not all systems return then
    count = connections;
    for (std::uint32_t i = 0; i < connections; ++i) fill(records + std::size_t{i} * size, i);
    return 0;
  }
  void fill(std::byte* record, std::uint32_t number) const {
    std::string bytes(4, '\0');
    bytes += static_cast<char>(0x40 + number) + std::string("\x33\x22\x11\0\0\0", handleBytes - 1);
    const auto text = [&](std::string value, std::size_t room) {
      value.resize(room);
      bytes += value;
    };
    if (knownSize < 100) {
      text("Entry" + std::to_string(number), 21);
    } else {
      text(number == 1 ? std::string(257, 'x') : "B\xFCro0", 257);  // no NUL after a full field
      text("modem", 17);
      text("Modem 1", 129);
      if (knownSize > 600) text("C:\\book.pbk", 260);
    }
    std::memcpy(record, bytes.data(), std::min<std::size_t>(bytes.size(), knownSize));
  }
  std::vector<ActiveConnection> list() {
    return EnumerateRasConnections([this](std::byte* records, std::uint32_t& bytes,
                                          std::uint32_t& count) { return answer(records, bytes, count); },
                                   handleBytes);
  }
};

TEST(RasConnections, TriesTheSizesUntilOneIsAccepted) {
  const struct {
    std::uint32_t known;
    std::size_t handleBytes;
    std::vector<std::uint32_t> asked;
  } cases[] = {{692, 4, {692, 692}},           {676, 4, {692, 676, 676}},
               {412, 4, {692, 676, 412, 412}}, {32, 4, {692, 676, 412, 32, 32}},
               {696, 8, {696, 696}},           {680, 8, {696, 680, 680}},
               {416, 8, {696, 680, 416, 416}}, {36, 8, {696, 680, 416, 36, 36}}};
  for (const auto& c : cases) {
    FakeSystem system{.knownSize = c.known, .handleBytes = c.handleBytes, .connections = 2};
    const auto list = system.list();
    EXPECT_EQ(system.askedSizes, c.asked);
    ASSERT_EQ(list.size(), 2U) << c.known;
    const bool oldest = c.known < 100;
    EXPECT_EQ(list[0].handle, 0x11223340U);
    EXPECT_EQ(list[1].handle, 0x11223341U);
    EXPECT_EQ(list[0].entryName, oldest ? "Entry0" : "Büro0");
    EXPECT_EQ(list[1].entryName, oldest ? "Entry1" : std::string(257, 'x'));
    EXPECT_EQ(list[1].deviceType + list[1].deviceName, oldest ? "" : "modemModem 1");
    EXPECT_EQ(list[1].phonebook, c.known > 600 ? "C:\\book.pbk" : "");
  }
}

TEST(RasConnections, FindsNoneWhereThereAreNone) {
  FakeSystem none{.knownSize = 692};
  EXPECT_THAT(none.list(), IsEmpty());
  EXPECT_THAT(none.askedSizes, ElementsAre(692));
  FakeSystem unknown{.knownSize = 1000, .connections = 1};
  EXPECT_THAT(unknown.list(), IsEmpty());
  EXPECT_THAT(unknown.askedSizes, ElementsAre(692, 676, 412, 32));
}

}  // namespace
}  // namespace quillmoor
