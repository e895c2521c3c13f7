// The records of active connections, from systems of every age.
#include "platform/network/RasConnections.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace quillmoor {
namespace {

using ::testing::ElementsAre;
constexpr std::uint32_t kInvalidSize = 632, kBufferTooSmall = 603;

/// A system that knows one size of record and has some connections.
struct FakeSystem {
  std::uint32_t knownSize = 0;
  std::size_t handleBytes = 4;
  std::uint32_t connections = 0;
  std::uint32_t oneMoreAtEveryAnswer = 0;
  bool tellsCount = true;  // when the buffer is too small
  std::vector<std::uint32_t> askedSizes{}, rooms{};

  std::uint32_t answer(std::byte* records, std::uint32_t& bytes, std::uint32_t& count) {
    std::uint32_t size = 0;
    std::memcpy(&size, records, sizeof size);
    askedSizes.push_back(size);
    rooms.push_back(bytes / size);
    if (size != knownSize) return kInvalidSize;
    const std::uint32_t room = bytes / size;
    connections += oneMoreAtEveryAnswer;
    bytes = connections * size;
    if (tellsCount || room >= connections) count = connections;
    if (room < connections) return kBufferTooSmall;
    for (std::uint32_t i = 0; i < connections; ++i) fill(records + std::size_t{i} * size, i);
    return 0;
  }
  void fill(std::byte* record, std::uint32_t number) const {
    const std::uint64_t handle = 0x11223340U + number;
    std::memcpy(record + 4, &handle, handleBytes);
    std::byte* at = record + 4 + handleBytes;
    const auto text = [&](const std::string& value, std::size_t room) {
      std::memcpy(at, value.data(), value.size());  // a full field has no NUL behind it
      at += room;
    };
    if (knownSize < 100) return text("Entry" + std::to_string(number), 21);
    text(number == 1 ? std::string(257, 'x') : "B\xFCro" + std::to_string(number), 257);
    text("modem", 17);
    text("Modem 1", 129);
    if (knownSize > 600) text("C:\\book.pbk", 260);
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
    EXPECT_EQ(system.rooms.back(), 2U);
    ASSERT_EQ(list.size(), 2U) << c.known;
    EXPECT_EQ(list[0].handle, 0x11223340U);
    EXPECT_EQ(list[1].handle, 0x11223341U);
    const bool oldest = c.known<100, withPhonebook = c.known> 600;
    EXPECT_EQ(list[0].entryName, oldest ? "Entry0" : "Büro0");
    EXPECT_EQ(list[1].entryName, oldest ? "Entry1" : std::string(257, 'x'));
    EXPECT_EQ(list[1].deviceType, oldest ? "" : "modem");
    EXPECT_EQ(list[1].deviceName, oldest ? "" : "Modem 1");
    EXPECT_EQ(list[1].phonebook, withPhonebook ? "C:\\book.pbk" : "");
  }
}

TEST(RasConnections, FindsNoneWhereThereAreNone) {
  FakeSystem none{.knownSize = 692};
  EXPECT_TRUE(none.list().empty());
  EXPECT_THAT(none.askedSizes, ElementsAre(692));
  FakeSystem unknown{.knownSize = 1000, .connections = 1};
  EXPECT_TRUE(unknown.list().empty());
  EXPECT_THAT(unknown.askedSizes, ElementsAre(692, 676, 412, 32));
}

TEST(RasConnections, MakesRoomByTheSizeWhereNoCountIsTold) {
  FakeSystem system{.knownSize = 412, .connections = 3, .tellsCount = false};
  EXPECT_EQ(system.list().size(), 3U);
}

TEST(RasConnections, GivesUpOnASystemThatHasMoreEachTime) {
  FakeSystem system{.knownSize = 412, .connections = 1, .oneMoreAtEveryAnswer = 1};
  EXPECT_TRUE(system.list().empty());
  EXPECT_LT(system.askedSizes.size(), 10U);
}

}  // namespace
}  // namespace quillmoor
