#include "platform/zip/ZipReader.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <new>
#include <system_error>
#include <vector>

#include "platform/system/LocalTime.h"
#include "platform/zip/ZipCrypto.h"
#include "platform/zip/ZipFormat.h"

namespace quillmoor::sfx {
namespace {

using zip::kNone16;
using zip::kNone32;

std::uint64_t number(std::span<const std::uint8_t> bytes, std::size_t at, std::size_t size) {
  std::uint64_t value = 0;
  for (std::size_t i = size; i-- > 0;) value = value << 8 | bytes[at + i];
  return value;
}
std::uint16_t u16(std::span<const std::uint8_t> bytes, std::size_t at) {
  return static_cast<std::uint16_t>(number(bytes, at, 2));
}
std::uint32_t u32(std::span<const std::uint8_t> bytes, std::size_t at) {
  return static_cast<std::uint32_t>(number(bytes, at, 4));
}

/// The content of an extra field; empty when it is missing or truncated.
std::span<const std::uint8_t> fieldOf(std::span<const std::uint8_t> extra, std::uint16_t id) {
  while (extra.size() >= 4) {
    const std::size_t size = u16(extra, 2);
    if (size > extra.size() - 4) break;
    if (u16(extra, 0) == id) return extra.subspan(4, size);
    extra = extra.subspan(4 + size);
  }
  return {};
}

std::int64_t timeOf(std::uint32_t dos, std::span<const std::uint8_t> stamp) {
  if (stamp.size() >= 5 && (stamp[0] & 1) != 0) return static_cast<std::int32_t>(u32(stamp, 1));
  const auto bits = [dos](int shift, unsigned mask) { return static_cast<int>(dos >> shift & mask); };
  const auto local = MakeLocalDateTime({1980 + bits(25, 0x7F), bits(21, 0xF), bits(16, 0x1F), bits(11, 0x1F),
                                        bits(5, 0x3F), bits(0, 0x1F) * 2, 0});
  return local ? LocalToUtc(*local).time_since_epoch().count() : 315'532'800;  // 1980
}

/// Reads a raw deflate stream.
class Inflater {
 public:
  Inflater() {
    if (inflateInit2(&stream_, -MAX_WBITS) != Z_OK) throw std::bad_alloc();
  }
  ~Inflater() { inflateEnd(&stream_); }
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;

  /// Passes the inflated `in` to `sink`. False when the data is not deflate, or continues after its end.
  template <class Sink>
  bool run(std::span<std::uint8_t> in, std::span<std::uint8_t> room, Sink sink) {
    stream_.next_in = in.data();
    stream_.avail_in = static_cast<uInt>(in.size());
    do {
      if (ended_) return stream_.avail_in == 0;
      stream_.next_out = room.data();
      stream_.avail_out = static_cast<uInt>(room.size());
      const int result = inflate(&stream_, Z_NO_FLUSH);
      ended_ = result == Z_STREAM_END;
      if (!ended_ && result != Z_OK && result != Z_BUF_ERROR) return false;
      if (!sink(std::span<const std::uint8_t>(room).first(room.size() - stream_.avail_out))) return false;
    } while (stream_.avail_in > 0 || stream_.avail_out == 0);
    return true;
  }
  bool ended() const { return ended_; }

 private:
  z_stream stream_{};
  bool ended_ = false;
};

std::string fileNameOf(const std::string& path) {
  return path.substr(path.find_last_of("/\\") + 1);
}

}  // namespace

bool ArchiveEntry::special() const {
  constexpr unsigned kKind = 0170000, kFile = 0100000, kFolder = 0040000;
  const unsigned kind = state.attributes >> 16 & kKind;
  return hostSystem == 3 && kind != 0 && kind != kFile && kind != kFolder;
}

/// The end records combined.
struct ZipReader::End {
  std::uint64_t disk = 0, directoryDisk = 0, entries = 0, directorySize = 0, directoryOffset = 0;
  std::int64_t offset = 0;  ///< of the first of them
};

void ZipReader::damaged(const std::string& what) const {
  throw ArchiveError(ArchiveFault::damaged, name_ + " is damaged: " + what);
}

std::optional<ZipReader::End> ZipReader::findEnd(Segments& segments, std::uint32_t disk) {
  const std::int64_t size = segments.size(disk);
  std::vector<std::uint8_t> tail(static_cast<std::size_t>(std::min<std::int64_t>(
      size, static_cast<std::int64_t>(zip::kEndRecordSize + kNone16 + zip::kZip64LocatorSize))));
  const std::int64_t start = size - static_cast<std::int64_t>(tail.size());
  Cursor cursor(segments, {disk, start});
  if (tail.size() < zip::kEndRecordSize || !cursor.take(tail)) return std::nullopt;
  const std::span<const std::uint8_t> bytes = tail;
  for (std::size_t at = tail.size() - zip::kEndRecordSize + 1; at-- > 0;) {
    if (u32(bytes, at) != zip::kEndRecord || at + zip::kEndRecordSize + u16(bytes, at + 20) != tail.size())
      continue;
    End end{u16(bytes, at + 4),  u16(bytes, at + 6),  u16(bytes, at + 10),
            u32(bytes, at + 12), u32(bytes, at + 16), start + static_cast<std::int64_t>(at)};
    const bool wide = end.disk == kNone16 || end.directoryDisk == kNone16 || end.entries == kNone16 ||
                      end.directorySize == kNone32 || end.directoryOffset == kNone32;
    if (wide && at >= zip::kZip64LocatorSize &&
        u32(bytes, at - zip::kZip64LocatorSize) == zip::kZip64Locator) {
      // Directly before the locator, whatever offset that has: this works after a prefix, too.
      end.offset -= static_cast<std::int64_t>(zip::kZip64LocatorSize + zip::kZip64EndRecordSize);
      std::array<std::uint8_t, zip::kZip64EndRecordSize> record{};
      Cursor front(segments, {disk, end.offset});
      if (end.offset < 0 || !front.take(record) || u32(record, 0) != zip::kZip64EndRecord)
        return std::nullopt;
      end.disk = u32(record, 16);
      end.directoryDisk = u32(record, 20);
      end.entries = number(record, 32, 8);
      end.directorySize = number(record, 40, 8);
      end.directoryOffset = number(record, 48, 8);
    }
    return end;
  }
  return std::nullopt;
}

void ZipReader::openSet(const std::string& programPath) {
  const std::size_t dot = programPath.find_last_of("./\\");
  const std::string stem =
      dot == std::string::npos || programPath[dot] != '.' ? programPath : programPath.substr(0, dot);
  const std::string last = stem + ".zip";
  if (!pathKind(last)) {
    throw ArchiveError(ArchiveFault::incomplete, "there is no archive at the end of " + name_ +
                                                     ": it is damaged, or its last part, " +
                                                     fileNameOf(last) + ", is missing");
  }
  Segments tail({last});
  const std::optional<End> end = findEnd(tail, 0);
  constexpr std::uint64_t kMostSegments = 1'000'000;
  if (!end || end->disk == 0 || end->disk > kMostSegments)
    throw ArchiveError(ArchiveFault::damaged,
                       fileNameOf(last) + " is not the last part of " + name_ + ", or damaged");
  std::vector<std::string> paths{programPath};
  for (std::uint64_t disk = 1; disk < end->disk; ++disk) {
    const std::string count = std::to_string(disk + 1);
    paths.push_back(stem + ".z" + (count.size() < 2 ? "0" : "") + count);
    if (!pathKind(paths.back())) {
      throw ArchiveError(ArchiveFault::incomplete, fileNameOf(paths.back()) + ", part " + count + " of " +
                                                       std::to_string(end->disk + 1) + ", is missing");
    }
  }
  paths.push_back(last);
  segments_ = std::make_unique<Segments>(std::move(paths));
}

ZipReader::ZipReader(const std::string& programPath) : name_(fileNameOf(programPath)) {
  segments_ = std::make_unique<Segments>(std::vector<std::string>{programPath});
  std::optional<End> end = findEnd(*segments_, 0);
  if (!end || end->disk != 0) {
    openSet(programPath);
    end = findEnd(*segments_, segments_->count() - 1);
  }
  const std::uint32_t last = segments_->count() - 1;
  if (!end || end->disk != last || end->directoryDisk > last)
    damaged("its end records contradict each other");
  if (last == 0) {
    const auto most = static_cast<std::uint64_t>(end->offset);
    if (end->directorySize > most || end->directoryOffset > most - end->directorySize)
      damaged("its directory is outside the archive");
    shift_ = end->offset - static_cast<std::int64_t>(end->directorySize + end->directoryOffset);
  }
  if (end->directoryOffset >
      static_cast<std::uint64_t>(segments_->size(static_cast<std::uint32_t>(end->directoryDisk))))
    damaged("its directory is outside the archive");
  if (end->entries > end->directorySize / zip::kCentralHeaderSize) damaged("its directory is too short");
  entries_ = end->entries;
  directory_ = {static_cast<std::uint32_t>(end->directoryDisk),
                static_cast<std::int64_t>(end->directoryOffset) + shift_};
}

ArchiveEntry ZipReader::readCentral(Cursor& cursor) const {
  std::array<std::uint8_t, zip::kCentralHeaderSize> fixed{};
  if (!cursor.take(fixed) || u32(fixed, 0) != zip::kCentralHeader) damaged("its directory is not readable");
  const std::size_t nameSize = u16(fixed, 28);
  std::vector<std::uint8_t> rest(nameSize + u16(fixed, 30));
  if (!cursor.take(rest) || !cursor.skip(u16(fixed, 32))) damaged("its directory ends too early");
  ArchiveEntry entry;
  entry.name.assign(rest.begin(), rest.begin() + static_cast<std::ptrdiff_t>(nameSize));
  const std::span<const std::uint8_t> extra = std::span(rest).subspan(nameSize);
  entry.hostSystem = fixed[5];
  entry.encrypted = (u16(fixed, 8) & zip::kFlagEncrypted) != 0;
  entry.method = u16(fixed, 10);
  entry.crc = u32(fixed, 16);
  entry.packedSize = u32(fixed, 20);
  entry.size = u32(fixed, 24);
  std::uint64_t disk = u16(fixed, 34), offset = u32(fixed, 42);
  std::span<const std::uint8_t> wide = fieldOf(extra, zip::kZip64Field);
  const auto widen = [&](std::uint64_t& value, std::uint64_t placeholder, std::size_t size) {
    if (value != placeholder) return;
    if (wide.size() < size) damaged("a size in its directory is missing");
    value = number(wide, 0, size);
    wide = wide.subspan(size);
  };
  widen(entry.size, kNone32, 8);
  widen(entry.packedSize, kNone32, 8);
  widen(offset, kNone32, 8);
  widen(disk, kNone16, 4);
  constexpr std::uint64_t kFar = std::uint64_t{1} << 62;
  if (disk >= segments_->count() || offset > kFar || entry.size > kFar || entry.packedSize > kFar)
    damaged("its directory points outside the archive");
  entry.place = {static_cast<std::uint32_t>(disk), static_cast<std::int64_t>(offset) + shift_};
  entry.state = {static_cast<std::int64_t>(entry.size),
                 timeOf(u32(fixed, 12), fieldOf(extra, zip::kTimestampField)), 0, u32(fixed, 38)};
  if (entry.method == zip::kAes) {
    const std::span<const std::uint8_t> aes = fieldOf(extra, zip::kAesField);
    constexpr unsigned kAes256 = 3;
    if (aes.size() < 7 || aes[4] != kAes256) {
      throw ArchiveError(ArchiveFault::unsupported,
                         name_ + " is encrypted by a method that this program does not support");
    }
    entry.aesVersion = u16(aes, 0);
    entry.method = u16(aes, 5);
  }
  if ((entry.method != zip::kStored && entry.method != zip::kDeflated) ||
      entry.encrypted != (entry.aesVersion != 0)) {
    throw ArchiveError(ArchiveFault::unsupported,
                       name_ + " is packed or encrypted by a method that this program does not support");
  }
  return entry;
}

void ZipReader::forEach(const std::function<void(const ArchiveEntry&)>& entry) {
  Cursor cursor(*segments_, directory_);
  for (std::uint64_t i = 0; i < entries_; ++i) entry(readCentral(cursor));
}

void ZipReader::contents(const ArchiveEntry& entry, std::string_view password,
                         const std::function<void(std::span<const std::uint8_t>)>& sink) {
  const auto damagedEntry = [&](const char* what) { damaged(entry.name + what); };
  Cursor cursor(*segments_, entry.place);
  std::array<std::uint8_t, zip::kLocalHeaderSize> fixed{};
  if (!cursor.take(fixed) || u32(fixed, 0) != zip::kLocalHeader) damagedEntry(" is not where it should be");
  std::string name(u16(fixed, 26), '\0');
  if (!cursor.take({reinterpret_cast<std::uint8_t*>(name.data()), name.size()}) || name != entry.name)
    damagedEntry(" has a different name in its local header");
  if (!cursor.skip(u16(fixed, 28))) damagedEntry(" ends too early");

  std::uint64_t left = entry.packedSize;
  std::unique_ptr<zip::AesEntry> aes;
  if (entry.encrypted) {
    zip::Salt salt{};
    std::array<std::uint8_t, zip::kVerifierSize> verifier{};
    if (left < zip::kAesOverhead || !cursor.take(salt) || !cursor.take(verifier))
      damagedEntry(" ends too early");
    aes = std::make_unique<zip::AesEntry>(password, salt);
    if (aes->verifier() != verifier) throw ArchiveError(ArchiveFault::wrongPassword, "the password is wrong");
    left -= zip::kAesOverhead;
  }
  if (entry.method == zip::kStored && left != entry.size) damagedEntry(" has contradicting sizes");

  std::uint64_t delivered = 0;
  uLong crc = 0;
  const auto deliver = [&](std::span<const std::uint8_t> bytes) {
    if (bytes.size() > entry.size - delivered) return false;
    delivered += bytes.size();
    crc = crc32_z(crc, bytes.data(), bytes.size());
    if (!bytes.empty()) sink(bytes);
    return true;
  };
  std::optional<Inflater> inflater;
  std::vector<std::uint8_t> room;
  if (entry.method == zip::kDeflated) {
    inflater.emplace();
    room.resize(std::size_t{256} << 10);
  }
  while (left > 0) {
    const std::span<std::uint8_t> bytes =
        cursor.some(static_cast<std::size_t>(std::min<std::uint64_t>(left, std::size_t{1} << 20)));
    if (bytes.empty()) damagedEntry(" ends too early");
    left -= bytes.size();
    if (aes) aes->decrypt(bytes);
    if (inflater ? !inflater->run(bytes, room, deliver) : !deliver(bytes))
      damagedEntry(" cannot be unpacked");
  }
  if (delivered != entry.size || (inflater && !inflater->ended())) damagedEntry(" ends too early");
  if (aes) {
    std::array<std::uint8_t, zip::kCodeSize> code{};
    if (!cursor.take(code) || code != aes->code()) damagedEntry(" does not match its authentication code");
  }
  constexpr unsigned kAe2 = 2;
  if (entry.aesVersion != kAe2 && crc != entry.crc) damagedEntry(" does not match its checksum");
}

}  // namespace quillmoor::sfx
