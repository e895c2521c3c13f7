// Records of a zip archive as bytes: local and central headers, the end records, and their extra fields.
//
// Sources: zip application note 6.3 (§4.3.7 local header, §4.3.12 central header, §4.3.14 to §4.3.16 end
// records, §4.4 fields, §4.5.3 zip64), the extended timestamp 0x5455, the AE-2 field 0x9901.
#pragma once

#include <cstdint>
#include <string>

#include "platform/system/LocalTime.h"

namespace quillmoor::zip {

inline constexpr std::uint32_t kLocalHeader = 0x04034b50;
inline constexpr std::uint32_t kCentralHeader = 0x02014b50;
inline constexpr std::uint32_t kEndRecord = 0x06054b50;
inline constexpr std::uint32_t kZip64EndRecord = 0x06064b50;
inline constexpr std::uint32_t kZip64Locator = 0x07064b50;
/// First bytes of an archive in segments (§8.5.3), and of one that fitted into a single segment (§8.5.4).
inline constexpr std::uint32_t kSpanned = 0x08074b50;
inline constexpr std::uint32_t kSpannedInOne = 0x30304b50;

inline constexpr std::size_t kLocalHeaderSize = 30;
inline constexpr std::size_t kCentralHeaderSize = 46;
inline constexpr std::size_t kEndRecordSize = 22;
inline constexpr std::size_t kZip64EndRecordSize = 56;
inline constexpr std::size_t kZip64LocatorSize = 20;
/// Maximum length of a name in bytes; with it every header fits into a segment of the minimum size.
inline constexpr std::size_t kLongestName = 60'000;

inline constexpr std::uint16_t kZip64Field = 0x0001;
inline constexpr std::uint16_t kTimestampField = 0x5455;
inline constexpr std::uint16_t kAesField = 0x9901;

inline constexpr std::uint16_t kFlagEncrypted = 1U << 0;
inline constexpr std::uint16_t kFlagUtf8 = 1U << 11;

inline constexpr std::uint16_t kStored = 0;
inline constexpr std::uint16_t kDeflated = 8;
inline constexpr std::uint16_t kAes = 99;

inline constexpr std::uint16_t kNone16 = 0xFFFF;
inline constexpr std::uint32_t kNone32 = 0xFFFFFFFF;

/// One entry, as described by its headers.
struct Entry {
  std::string name;  ///< with "/" between folders, and at the end of a folder's name
  bool encrypted = false;
  std::uint16_t method = kStored;  ///< kStored or kDeflated, also when encrypted
  std::uint32_t crc = 0;  ///< not written for an encrypted entry, whose authentication code replaces it
  std::uint64_t size = 0;
  std::uint64_t packedSize = 0;  ///< includes salt, verifier and code of an encrypted entry
  /// The local header has 8-byte sizes. Fixed when it is first written, as its length must not change.
  bool zip64Local = false;
  std::int64_t modified = 0;  ///< seconds since 1970, UTC
  LocalDateTime modifiedLocal;
  std::uint8_t hostSystem = 0;
  std::uint32_t attributes = 0;
  std::uint32_t disk = 0;    ///< number of the segment with the local header, from 0
  std::uint64_t offset = 0;  ///< of the local header in its segment
};

/// Date and time in MS-DOS format, the date in the upper half: 2 s steps from 1980 to 2107; times outside are
/// clamped.
std::uint32_t dosTime(LocalDateTime time);

std::string localHeader(const Entry& entry);
std::string centralHeader(const Entry& entry);

/// The position of the central directory and of the end records.
struct End {
  std::uint32_t disk = 0;  ///< of the end records themselves
  std::uint32_t directoryDisk = 0;
  std::uint64_t entriesOnDisk = 0;  ///< central headers in the segment of the end records
  std::uint64_t entries = 0;
  std::uint64_t directorySize = 0;
  std::uint64_t directoryOffset = 0;
  std::uint64_t endOffset = 0;  ///< of the first end record in its segment
};

/// The end record, after the zip64 ones if a value needs them.
std::string endRecords(const End& end);

/// Maximum length of `endRecords`.
inline constexpr std::size_t kLongestEnd = kZip64EndRecordSize + kZip64LocatorSize + kEndRecordSize;

}  // namespace quillmoor::zip
