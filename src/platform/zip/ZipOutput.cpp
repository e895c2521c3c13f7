#include "platform/zip/ZipOutput.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <system_error>
#include <utility>

#include "base/Ascii.h"
#include "platform/files/FileSet.h"
#include "platform/files/Files.h"
#include "platform/files/LocalPath.h"
#include "platform/zip/ZipFormat.h"

namespace quillmoor::zip {
namespace {

constexpr std::size_t kBuffer = std::size_t{256} << 10;

std::span<const std::uint8_t> asBytes(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::array<std::uint8_t, 4> littleEndian(std::uint32_t value) {
  return {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8),
          static_cast<std::uint8_t>(value >> 16), static_cast<std::uint8_t>(value >> 24)};
}

/// Whether the file is the last segment of several, by the end record in its tail.
bool endsSet(const std::string& path) {
  try {
    InputFile file(path, false);
    std::vector<std::uint8_t> tail(kEndRecordSize + kNone16);
    const std::int64_t size = file.state().size;
    tail.resize(file.readAt(std::max<std::int64_t>(0, size - static_cast<std::int64_t>(tail.size())), tail));
    const auto signature = littleEndian(kEndRecord);
    const auto found = std::find_end(tail.begin(), tail.end(), signature.begin(), signature.end());
    return tail.end() - found >= static_cast<std::ptrdiff_t>(kEndRecordSize) &&
           (found[4] != 0 || found[5] != 0);
  } catch (const std::system_error&) {
    return false;
  }
}

std::size_t separatorAt(const std::string& path) {
  return path.find_last_of(kLocalSeparator == '/' ? "/" : "/\\");
}

}  // namespace

SegmentNames::SegmentNames(std::string path, bool selfExtracting)
    : path_(std::move(path)), selfExtracting_(selfExtracting) {
  const std::size_t separator = separatorAt(path_);
  folder_ = separator == std::string::npos ? "" : path_.substr(0, separator + 1);
  const std::size_t dot = path_.rfind('.');
  stem_ = dot == std::string::npos || dot < folder_.size() ? path_ : path_.substr(0, dot);
  const std::string ending = AsciiLower(path_.substr(stem_.size()));
  mayHaveSegments_ = ending == (selfExtracting_ ? ".exe" : ".zip");
}

std::string SegmentNames::numbered(std::uint32_t disk) const {
  char ending[16];
  std::snprintf(ending, sizeof ending, ".z%02u", disk + 1);
  return stem_ + ending;
}

std::string SegmentNames::final(std::uint32_t disk, std::uint32_t count) const {
  if (selfExtracting_ && disk == 0) return path_;
  if (disk + 1 < count) return numbered(disk);
  return selfExtracting_ ? stem_ + ".zip" : path_;
}

bool SegmentNames::maybePart(std::string_view name) const {
  if (name == std::string_view(path_).substr(folder_.size())) return true;
  const std::string_view stem = std::string_view(stem_).substr(folder_.size());
  if (!mayHaveSegments_ || !name.starts_with(stem)) return false;
  const std::string_view ending = name.substr(stem.size());
  return ending == ".zip" ||
         (ending.starts_with(".z") && ending.size() >= 4 &&
          std::all_of(ending.begin() + 2, ending.end(), [](char c) { return c >= '0' && c <= '9'; }));
}

void SegmentNames::removeSurplus(std::uint32_t count) const {
  if (!mayHaveSegments_) return;
  const std::string last = stem_ + ".zip";
  if (selfExtracting_ && count == 1) {
    // Only the rest of a self-extracting set: that has no .z01, and its .zip ends a set.
    if (pathKind(numbered(0)) || !endsSet(last)) return;
    removeFile(last);
  } else if (selfExtracting_) {
    removeFile(numbered(0));  // of a plain set whose .zip was just replaced
  }
  const std::uint32_t firstSurplus = std::max(count - 1, selfExtracting_ ? 1U : 0U);
  if (firstSurplus == 0) removeFile(numbered(0));
  for (std::uint32_t disk = std::max(firstSurplus, 1U); removeFile(numbered(disk)); ++disk) {
  }
}

Output::Output(SegmentNames names, std::optional<std::int64_t> segmentBytes, bool selfExtracting)
    : names_(std::move(names)), limit_(segmentBytes), selfExtracting_(selfExtracting) {
  RemoveStaleTemporaries(names_.folder());
  endKilledExchange(names_.final(0, 1));
  work_.emplace(names_.folder());
  buffer_.reserve(kBuffer);
  open();
}

void Output::open() {
  file_ = std::make_unique<OutputFile>(temporary(disk_), selfExtracting_ && disk_ == 0);
}

void Output::flush() {
  file_->write(buffer_);
  buffer_.clear();
}

void Output::nextSegment() {
  flush();
  file_->close();
  ++disk_;
  size_ = 0;
  open();
}

void Output::writeStub(InputFile& stub) {
  const std::optional<std::int64_t> limit = std::exchange(limit_, std::nullopt);
  std::vector<std::uint8_t> piece(kBuffer);
  while (const std::size_t got = stub.read(piece)) write(std::span(piece).first(got));
  limit_ = limit;
}

void Output::start() {
  signature_ = place();
  if (!limit_) return;
  const std::int64_t stub = size_;
  const auto bytes = littleEndian(kSpanned);
  const std::optional<std::int64_t> limit = std::exchange(limit_, std::nullopt);
  write(bytes);  // in the stub's segment even if that is full
  limit_ = limit;
  if (stub > 0 && size_ > *limit_) nextSegment();
}

void Output::keepTogether(std::size_t bytes) {
  if (limit_ && size_ + static_cast<std::int64_t>(bytes) > *limit_) nextSegment();
}

void Output::write(std::string_view bytes) {
  write(asBytes(bytes));
}

void Output::write(std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    if (limit_ && size_ >= *limit_) nextSegment();
    std::size_t piece = std::min(bytes.size(), kBuffer - buffer_.size());
    if (limit_)
      piece =
          static_cast<std::size_t>(std::min<std::int64_t>(static_cast<std::int64_t>(piece), *limit_ - size_));
    buffer_.insert(buffer_.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(piece));
    size_ += static_cast<std::int64_t>(piece);
    total_ += static_cast<std::int64_t>(piece);
    if (buffer_.size() == kBuffer) flush();
    bytes = bytes.subspan(piece);
  }
}

void Output::patch(SegmentPlace place, std::string_view bytes) {
  if (place.disk != disk_) {
    OutputFile::existing(temporary(place.disk)).writeAt(place.offset, asBytes(bytes));
    return;
  }
  flush();
  file_->writeAt(place.offset, asBytes(bytes));
}

std::vector<std::string> Output::finish() {
  const std::uint32_t count = disk_ + 1;
  if (limit_ && count == 1) {
    const auto bytes = littleEndian(kSpannedInOne);
    patch(signature_, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  }
  flush();
  file_->close();

  std::vector<std::string> paths;
  for (std::uint32_t disk = 0; disk < count; ++disk) paths.push_back(names_.final(disk, count));
  const std::uint32_t main = selfExtracting_ ? 0 : count - 1;
  // A previous archive is replaced only by one that has reached the disk.
  const bool replaces =
      std::any_of(paths.begin(), paths.end(), [](const auto& path) { return pathKind(path); });
  for (std::uint32_t disk = 0; replaces && disk < count; ++disk) {
    if (!flushFile(temporary(disk))) {
      throw std::system_error(std::make_error_code(std::errc::io_error), "cannot write " + paths[disk]);
    }
  }
  std::vector<SetFile> files;
  for (std::uint32_t disk = 0; disk < count; ++disk) {
    if (disk != main) files.push_back({temporary(disk), paths[disk]});
  }
  files.push_back({temporary(main), paths[main]});
  renameSetIntoPlace(files);
  names_.removeSurplus(count);
  return paths;
}

}  // namespace quillmoor::zip
