#include "platform/zip/Segments.h"

#include <algorithm>

namespace quillmoor::sfx {
namespace {

constexpr std::size_t kBuffer = std::size_t{128} << 10;

}  // namespace

InputFile& Segments::open(std::uint32_t disk) {
  if (!file_ || disk_ != disk) {
    file_.reset();
    file_.emplace(paths_[disk], true);
    disk_ = disk;
    size_ = file_->state().size;
  }
  return *file_;
}

std::int64_t Segments::size(std::uint32_t disk) {
  open(disk);
  return size_;
}

std::size_t Segments::read(zip::SegmentPlace& place, std::span<std::uint8_t> bytes) {
  while (place.disk < count()) {
    InputFile& file = open(place.disk);
    if (place.offset >= 0 && place.offset < size_) {
      const auto most = static_cast<std::size_t>(
          std::min<std::int64_t>(static_cast<std::int64_t>(bytes.size()), size_ - place.offset));
      const std::size_t got = file.readAt(place.offset, bytes.first(most));
      place.offset += static_cast<std::int64_t>(got);
      return got;
    }
    if (place.offset != size_) return 0;  // an invalid position
    ++place.disk;
    place.offset = 0;
  }
  return 0;
}

bool Cursor::fill() {
  if (at_ < buffer_.size()) return true;
  buffer_.resize(kBuffer);
  buffer_.resize(segments_.read(next_, buffer_));
  at_ = 0;
  return !buffer_.empty();
}

std::span<std::uint8_t> Cursor::some(std::size_t most) {
  if (!fill()) return {};
  const std::span<std::uint8_t> bytes = std::span(buffer_).subspan(at_, std::min(most, buffer_.size() - at_));
  at_ += bytes.size();
  return bytes;
}

bool Cursor::take(std::span<std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const std::span<std::uint8_t> got = some(bytes.size());
    if (got.empty()) return false;
    std::copy(got.begin(), got.end(), bytes.begin());
    bytes = bytes.subspan(got.size());
  }
  return true;
}

bool Cursor::skip(std::size_t count) {
  while (count > 0) {
    const std::size_t got = some(count).size();
    if (got == 0) return false;
    count -= got;
  }
  return true;
}

}  // namespace quillmoor::sfx
