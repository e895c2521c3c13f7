#include "support/ZipInspection.h"

#include <zlib.h>

#include <algorithm>
#include <map>
#include <stdexcept>
#include <tuple>

#include "platform/zip/ZipCrypto.h"
#include "support/TemporaryFolder.h"

namespace quillmoor::testing {
namespace {

void require(bool holds, const std::string& what) {
  if (!holds) throw std::runtime_error(what);
}

/// A number, lowest byte first.
std::uint32_t numberOf(const std::string& bytes) {
  std::uint32_t value = 0;
  for (auto byte = bytes.rbegin(); byte != bytes.rend(); ++byte)
    value = value << 8 | static_cast<unsigned char>(*byte);
  return value;
}

/// The segments of an archive, one after the other.
struct Archive {
  std::string bytes;
  std::vector<std::uint64_t> starts;  // of each segment in `bytes`, and the end of the last one

  explicit Archive(const std::vector<std::string>& segments) : starts{0} {
    for (const std::string& segment : segments) starts.push_back((bytes += segment).size());
  }
  /// Of a place as headers name it.
  std::uint64_t position(std::uint64_t disk, std::uint64_t offset) const {
    require(disk + 1 < starts.size(), "segment " + std::to_string(disk) + " does not exist");
    require(starts[disk] + offset < starts[disk + 1], "an offset is outside of its segment");
    return starts[disk] + offset;
  }
};

class Reader {
 public:
  Reader(const Archive& archive, std::uint64_t position) : archive_(archive), at_(position) {}
  std::uint32_t u16() { return numberOf(take(2)); }
  std::uint32_t u32() { return numberOf(take(4)); }
  /// Part of a header, all of which lies in one segment.
  std::string take(std::uint64_t count) {
    const auto end = std::upper_bound(archive_.starts.begin(), archive_.starts.end(), at_);
    require(count == 0 || (end != archive_.starts.end() && at_ + count <= *end),
            "a header crosses the end of its segment");
    return takeAcross(count);
  }
  /// Data, which may continue in the next segments.
  std::string takeAcross(std::uint64_t count) {
    require(at_ + count <= archive_.bytes.size(), "the data goes beyond the last segment");
    at_ += count;
    return archive_.bytes.substr(at_ - count, count);
  }
  std::uint64_t position() const { return at_; }

 private:
  const Archive& archive_;
  std::uint64_t at_;
};

std::string inflated(const std::string& data, std::uint64_t size) {
  std::string out(static_cast<std::size_t>(size) + 1, '\0');
  z_stream stream{};
  require(inflateInit2(&stream, -MAX_WBITS) == Z_OK, "inflateInit2");
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.data()));
  stream.avail_in = static_cast<uInt>(data.size());
  stream.next_out = reinterpret_cast<Bytef*>(out.data());
  stream.avail_out = static_cast<uInt>(out.size());
  const int result = inflate(&stream, Z_FINISH);
  const bool whole = result == Z_STREAM_END && stream.total_out == size && stream.avail_in == 0;
  inflateEnd(&stream);
  require(whole, "the deflated data is damaged, too long or too short");
  out.resize(static_cast<std::size_t>(size));
  return out;
}

std::string decrypted(const std::string& data, const std::string& password) {
  require(data.size() >= zip::kAesOverhead, "encrypted data is too short");
  zip::Salt salt;
  std::copy_n(data.begin(), salt.size(), salt.begin());
  zip::AesEntry aes(password, salt);
  const auto text = [](const auto& bytes) { return std::string(bytes.begin(), bytes.end()); };
  require(data.substr(zip::kSaltSize, zip::kVerifierSize) == text(aes.verifier()),
          "the password's verifier differs");
  std::string plain = data.substr(zip::kSaltSize + zip::kVerifierSize, data.size() - zip::kAesOverhead);
  aes.decrypt({reinterpret_cast<std::uint8_t*>(plain.data()), plain.size()});
  require(data.substr(data.size() - zip::kCodeSize) == text(aes.code()), "the authentication code differs");
  return plain;
}

struct Header {
  InspectedEntry entry;
  std::uint32_t versionNeeded = 0, crc = 0, rawMethod = 0;
};

/// From the version needed to the size; both headers have these.
void readCommon(Reader& record, Header& header) {
  InspectedEntry& entry = header.entry;
  header.versionNeeded = record.u16();
  entry.flags = record.u16();
  header.rawMethod = record.u16();
  entry.dosTime = record.u32();
  header.crc = record.u32();
  entry.packedSize = record.u32();
  entry.size = record.u32();
  require(entry.packedSize != 0xFFFFFFFF && entry.size != 0xFFFFFFFF, "wide sizes where none are needed");
}

void readFields(Header& header, const std::string& extra) {
  InspectedEntry& entry = header.entry;
  entry.encrypted = (entry.flags & 1) != 0;
  entry.method = header.rawMethod;
  const Archive field({extra});
  std::map<unsigned, std::string> fields;
  for (Reader record(field, 0); record.position() < extra.size();) {
    const unsigned id = record.u16();
    const std::size_t size = record.u16();
    require(fields.emplace(id, record.take(size)).second, "an extra field comes twice");
  }
  for (const auto& [id, bytes] : fields) {
    if (id == 0x5455) {
      require(bytes.size() == 5 && bytes[0] == 1, "the timestamp field is not as it should be");
      entry.modified = static_cast<std::int32_t>(numberOf(bytes.substr(1)));
    } else {
      require(id == 0x9901 && header.rawMethod == 99 && bytes.starts_with(std::string("\2\0AE\3", 5)),
              "an extra field that should not be there, or is not as it should be");
      entry.method = numberOf(bytes.substr(5));
      require(header.crc == 0, "an AE-2 entry holds a CRC");
    }
  }
  require(entry.encrypted == fields.contains(0x9901), "flag and field of the encryption differ");
}

Header readCentral(Reader& record) {
  Header header;
  InspectedEntry& entry = header.entry;
  require(record.u32() == 0x02014b50, "no central header where one should be");
  record.u16();
  readCommon(record, header);
  const std::size_t nameSize = record.u16(), extraSize = record.u16();
  require(record.u16() == 0, "a comment");
  entry.disk = record.u16();
  record.u16();
  entry.attributes = record.u32();
  entry.offset = record.u32();
  entry.name = record.take(nameSize);
  readFields(header, record.take(extraSize));
  return header;
}

void checkLocal(Reader& record, Header& central, const std::string& password) {
  InspectedEntry& entry = central.entry;
  Header local;
  require(record.u32() == 0x04034b50, "no local header where one should be");
  readCommon(record, local);
  const std::size_t nameSize = record.u16(), extraSize = record.u16();
  local.entry.name = record.take(nameSize);
  readFields(local, record.take(extraSize));
  const auto common = [](const Header& header) {
    const InspectedEntry& e = header.entry;
    return std::tuple(e.name, header.versionNeeded, e.flags, header.rawMethod, e.method, e.dosTime,
                      e.modified, header.crc, e.size, e.packedSize);
  };
  require(common(local) == common(central), "the headers of " + entry.name + " differ");
  require((entry.flags & 8) == 0, "a data descriptor is announced");

  std::string data = record.takeAcross(entry.packedSize);
  if (entry.encrypted) data = decrypted(data, password);
  entry.contents = entry.method == 8 ? inflated(data, entry.size) : data;
  require(entry.contents.size() == entry.size, "the size differs");
  require(entry.encrypted || crc32_z(0, reinterpret_cast<const Bytef*>(entry.contents.data()),
                                     entry.contents.size()) == central.crc,
          "the CRC differs");
}

}  // namespace

const InspectedEntry& InspectedArchive::operator[](const std::string& name) const {
  const auto found =
      std::find_if(entries.begin(), entries.end(), [&](const auto& entry) { return entry.name == name; });
  if (found == entries.end()) throw std::runtime_error("no entry " + name);
  return *found;
}

InspectedArchive inspectArchive(const std::vector<std::string>& paths, const std::string& password,
                                std::size_t prefix) {
  std::vector<std::string> segments;
  for (const std::string& path : paths) segments.push_back(contentsOf(path));
  const Archive archive(segments);
  const std::size_t last = segments.size() - 1;
  require(segments[last].size() >= 22, "too short for an end record");
  const std::uint64_t endRecord = archive.bytes.size() - 22;
  Reader end(archive, endRecord);
  require(end.u32() == 0x06054b50, "no end record at the end");
  const std::uint32_t disk = end.u16(), directoryDisk = end.u16(), onDisk = end.u16(), entries = end.u16(),
                      directorySize = end.u32(), directoryOffset = end.u32();
  require(end.u16() == 0, "a comment");
  require(disk == last, "the end record has the wrong number of its segment");

  // The signature, the entries, the central directory and the end record follow each other without a gap.
  Reader front(archive, prefix);
  const bool split = segments.size() > 1;
  if (split || segments[0].substr(prefix, 4) == "PK00")
    require(front.u32() == (split ? 0x08074b50 : 0x30304b50), "no signature of a split archive");
  std::uint64_t next = front.position();
  const std::uint64_t directory = archive.position(directoryDisk, directoryOffset);
  Reader central(archive, directory);
  std::uint32_t onLast = 0;
  InspectedArchive inspected;
  for (std::uint32_t i = 0; i < entries; ++i) {
    if (central.position() >= archive.starts[last]) ++onLast;
    Header header = readCentral(central);
    Reader local(archive, archive.position(header.entry.disk, header.entry.offset));
    require(local.position() == next, "there is a gap or an overlap before " + header.entry.name);
    checkLocal(local, header, password);
    next = local.position();
    inspected.entries.push_back(std::move(header.entry));
  }
  require(directory == next, "there is a gap or an overlap before the central directory");
  require(central.position() == endRecord, "there is a gap or an overlap before the end record");
  require(endRecord - directory == directorySize, "the size of the central directory is wrong");
  require(onLast == onDisk, "the number of entries in the last segment is wrong");
  return inspected;
}

}  // namespace quillmoor::testing
