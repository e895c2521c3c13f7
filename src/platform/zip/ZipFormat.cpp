#include "platform/zip/ZipFormat.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>

#include "base/Utf8.h"

namespace quillmoor::zip {
namespace {

/// Appends little-endian numbers.
class Bytes {
 public:
  Bytes& u8(std::uint8_t value) { return number(value, 1); }
  Bytes& u16(std::uint16_t value) { return number(value, 2); }
  Bytes& u32(std::uint32_t value) { return number(value, 4); }
  Bytes& u64(std::uint64_t value) { return number(value, 8); }
  Bytes& text(std::string_view value) {
    bytes_ += value;
    return *this;
  }
  /// An extra field with its header.
  Bytes& field(std::uint16_t id, const Bytes& content) {
    return u16(id).u16(static_cast<std::uint16_t>(content.bytes_.size())).text(content.bytes_);
  }
  std::size_t size() const { return bytes_.size(); }
  std::string take() { return std::move(bytes_); }
  const std::string& str() const { return bytes_; }

 private:
  Bytes& number(std::uint64_t value, int count) {
    for (int i = 0; i < count; ++i) bytes_ += static_cast<char>(value >> (8 * i) & 0xFF);
    return *this;
  }
  std::string bytes_;
};

std::uint16_t low16(std::uint64_t value) {
  return static_cast<std::uint16_t>(std::min<std::uint64_t>(value, kNone16));
}
std::uint32_t low32(std::uint64_t value) {
  return static_cast<std::uint32_t>(std::min<std::uint64_t>(value, kNone32));
}

constexpr std::uint16_t kVersionPlain = 20, kVersionZip64 = 45, kVersionAes = 51;

std::uint16_t versionNeeded(const Entry& entry, bool zip64) {
  if (entry.encrypted) return kVersionAes;
  return zip64 ? kVersionZip64 : kVersionPlain;
}

bool isAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool isUtf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = DecodeUtf8(text).length;
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

/// Extra fields of both headers.
void commonFields(Bytes& extra, const Entry& entry) {
  // The field has a signed 32-bit time; times beyond it are only in the DOS fields.
  if (entry.modified >= std::numeric_limits<std::int32_t>::min() &&
      entry.modified <= std::numeric_limits<std::int32_t>::max()) {
    extra.field(kTimestampField, Bytes().u8(1).u32(static_cast<std::uint32_t>(entry.modified)));
  }
  if (entry.encrypted) extra.field(kAesField, Bytes().u16(2).text("AE").u8(3).u16(entry.method));
}

/// The fields from the version needed to the CRC, common to both headers.
void commonStart(Bytes& header, const Entry& entry, bool zip64) {
  std::uint16_t flags = entry.encrypted ? kFlagEncrypted : 0;
  // A name in an unknown encoding is written unchanged, without the flag.
  if (!isAscii(entry.name) && isUtf8(entry.name)) flags |= kFlagUtf8;
  header.u16(versionNeeded(entry, zip64))
      .u16(flags)
      .u16(entry.encrypted ? kAes : entry.method)
      .u32(dosTime(entry.modifiedLocal))
      .u32(entry.encrypted ? 0 : entry.crc);
}

}  // namespace

std::uint32_t dosTime(LocalDateTime time) {
  const LocalDateTimeParts parts = SplitLocalDateTime(time);
  if (parts.year < 1980) return (1U << 5 | 1U) << 16;
  if (parts.year > 2107) return (127U << 9 | 12U << 5 | 31U) << 16 | (23U << 11 | 59U << 5 | 29U);
  const auto bits = [](int value, int shift) { return static_cast<std::uint32_t>(value) << shift; };
  const std::uint32_t date = bits(parts.year - 1980, 9) | bits(parts.month, 5) | bits(parts.day, 0);
  return date << 16 | bits(parts.hour, 11) | bits(parts.minute, 5) | bits(parts.second / 2, 0);
}

std::string localHeader(const Entry& entry) {
  Bytes extra;
  if (entry.zip64Local) extra.field(kZip64Field, Bytes().u64(entry.size).u64(entry.packedSize));
  commonFields(extra, entry);
  Bytes header;
  header.u32(kLocalHeader);
  commonStart(header, entry, entry.zip64Local);
  header.u32(entry.zip64Local ? kNone32 : static_cast<std::uint32_t>(entry.packedSize))
      .u32(entry.zip64Local ? kNone32 : static_cast<std::uint32_t>(entry.size))
      .u16(static_cast<std::uint16_t>(entry.name.size()))
      .u16(static_cast<std::uint16_t>(extra.size()))
      .text(entry.name)
      .text(extra.str());
  return header.take();
}

std::string centralHeader(const Entry& entry) {
  // Only values that do not fit their 4 bytes (2 for the disk), in this order.
  Bytes zip64;
  if (entry.size >= kNone32) zip64.u64(entry.size);
  if (entry.packedSize >= kNone32) zip64.u64(entry.packedSize);
  if (entry.offset >= kNone32) zip64.u64(entry.offset);
  if (entry.disk >= kNone16) zip64.u32(entry.disk);
  Bytes extra;
  if (zip64.size() > 0) extra.field(kZip64Field, zip64);
  commonFields(extra, entry);
  Bytes header;
  header.u32(kCentralHeader).u8(static_cast<std::uint8_t>(kVersionAes)).u8(entry.hostSystem);
  commonStart(header, entry, zip64.size() > 0 || entry.zip64Local);
  header.u32(low32(entry.packedSize))
      .u32(low32(entry.size))
      .u16(static_cast<std::uint16_t>(entry.name.size()))
      .u16(static_cast<std::uint16_t>(extra.size()))
      .u16(0)  // comment
      .u16(low16(entry.disk))
      .u16(0)  // internal attributes
      .u32(entry.attributes)
      .u32(low32(entry.offset))
      .text(entry.name)
      .text(extra.str());
  return header.take();
}

std::string endRecords(const End& end) {
  Bytes records;
  if (end.disk >= kNone16 || end.directoryDisk >= kNone16 || end.entriesOnDisk >= kNone16 ||
      end.entries >= kNone16 || end.directorySize >= kNone32 || end.directoryOffset >= kNone32) {
    records.u32(kZip64EndRecord)
        .u64(kZip64EndRecordSize - 12)  // what follows this field
        .u16(kVersionAes)
        .u16(kVersionZip64)
        .u32(end.disk)
        .u32(end.directoryDisk)
        .u64(end.entriesOnDisk)
        .u64(end.entries)
        .u64(end.directorySize)
        .u64(end.directoryOffset);
    records.u32(kZip64Locator).u32(end.disk).u64(end.endOffset).u32(end.disk + 1);
  }
  records.u32(kEndRecord)
      .u16(low16(end.disk))
      .u16(low16(end.directoryDisk))
      .u16(low16(end.entriesOnDisk))
      .u16(low16(end.entries))
      .u32(low32(end.directorySize))
      .u32(low32(end.directoryOffset))
      .u16(0);  // comment
  return records.take();
}

}  // namespace quillmoor::zip
