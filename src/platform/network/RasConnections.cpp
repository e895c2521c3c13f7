#include "platform/network/RasConnections.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "platform/system/CodePage.h"

namespace quillmoor {
namespace {

constexpr std::uint32_t kSuccess = 0;
constexpr std::uint32_t kBufferTooSmall = 603;  // ERROR_BUFFER_TOO_SMALL: the record's size is accepted
constexpr std::uint32_t kMostConnections = 1000;

/// Reads the fields of one record in order, up to the record's end.
class RecordReader {
 public:
  RecordReader(const std::byte* record, std::size_t size) : at_(record), left_(size) {}

  std::uint64_t number(std::size_t bytes) {
    std::uint64_t value = 0;
    std::memcpy(&value, at_, bytes);  // little-endian, like every machine with these functions
    skip(bytes);
    return value;
  }
  std::string text(std::size_t room) {
    room = std::min(room, left_);
    const char* const begin = reinterpret_cast<const char*>(at_);
    const std::string ansi(begin, std::find(begin, begin + room, '\0'));
    skip(room);
    return FromAnsi(ansi);
  }

 private:
  void skip(std::size_t bytes) {
    at_ += bytes;
    left_ -= bytes;
  }
  const std::byte* at_;
  std::size_t left_;
};

ActiveConnection readRecord(const std::byte* record, std::size_t size, std::size_t handleBytes) {
  RecordReader reader(record, size);
  reader.number(4);  // the record's size
  ActiveConnection connection;
  connection.handle = reader.number(handleBytes);
  const bool oldest = size == kRasRecordSizes.back() + handleBytes - 4;
  connection.entryName = reader.text(oldest ? 21 : 257);
  if (oldest) return connection;
  connection.deviceType = reader.text(17);
  connection.deviceName = reader.text(129);
  connection.phonebook = reader.text(260);
  return connection;
}

}  // namespace

std::vector<ActiveConnection> EnumerateRasConnections(const RasEnumerate& ask, std::size_t handleBytes) {
  for (const std::uint32_t sizeWithShortHandle : kRasRecordSizes) {
    const auto size = static_cast<std::uint32_t>(sizeWithShortHandle + handleBytes - 4);
    std::vector<std::byte> records;
    std::uint32_t count = 0;
    const auto askFor = [&](std::uint32_t room) {
      records.assign(std::size_t{room} * size, std::byte{0});
      std::memcpy(records.data(), &size, sizeof size);
      auto bytes = static_cast<std::uint32_t>(records.size());
      const std::uint32_t result = ask(records.data(), bytes, count);
      if (result == kBufferTooSmall) count = std::max(count, bytes / size);
      return result;
    };
    std::uint32_t result = askFor(1);
    if (result != kSuccess && result != kBufferTooSmall) continue;
    // Retries while new connections appear in between.
    for (int attempt = 0; attempt < 4 && count != 0; ++attempt) {
      result = askFor(std::min(count, kMostConnections));
      if (result != kBufferTooSmall) break;
    }
    if (result != kSuccess) return {};
    std::vector<ActiveConnection> connections;
    count = std::min(count, static_cast<std::uint32_t>(records.size() / size));
    for (std::uint32_t i = 0; i < count; ++i) {
      connections.push_back(readRecord(records.data() + std::size_t{i} * size, size, handleBytes));
    }
    return connections;
  }
  return {};
}

}  // namespace quillmoor
