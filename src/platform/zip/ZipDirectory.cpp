#include "platform/zip/ZipDirectory.h"

#include <span>
#include <utility>

#include "platform/zip/ZipFormat.h"

namespace quillmoor::zip {
namespace {

constexpr std::size_t kPiece = std::size_t{256} << 10;

/// Length of the header at the start of `bytes`; 0 when its fixed part is incomplete.
std::size_t headerLength(std::string_view bytes) {
  if (bytes.size() < kCentralHeaderSize) return 0;
  const auto u16 = [&](std::size_t at) {
    return static_cast<std::size_t>(static_cast<unsigned char>(bytes[at])) |
           static_cast<std::size_t>(static_cast<unsigned char>(bytes[at + 1])) << 8;
  };
  return kCentralHeaderSize + u16(28) + u16(30) + u16(32);
}

}  // namespace

Directory::Directory(std::string spoolPath, std::size_t mostInMemory)
    : spoolPath_(std::move(spoolPath)), mostInMemory_(mostInMemory) {}

Directory::~Directory() {
  if (!spool_) return;
  spool_.reset();
  removeFile(spoolPath_);
}

void Directory::add(std::string_view centralHeader) {
  memory_ += centralHeader;
  ++entries_;
  if (memory_.size() < mostInMemory_) return;
  if (!spool_) spool_ = std::make_unique<OutputFile>(spoolPath_);
  spool_->write({reinterpret_cast<const std::uint8_t*>(memory_.data()), memory_.size()});
  memory_.clear();
}

void Directory::forEach(const std::function<void(std::string_view)>& header) {
  std::int64_t readTo = 0;
  std::string bytes;
  const auto passOn = [&] {
    std::string_view rest = bytes;
    for (std::size_t length; (length = headerLength(rest)) != 0 && length <= rest.size();
         rest.remove_prefix(length))
      header(rest.substr(0, length));
    bytes.erase(0, bytes.size() - rest.size());
  };
  while (spool_) {
    const std::size_t before = bytes.size();
    bytes.resize(before + kPiece);
    const std::size_t got =
        spool_->readAt(readTo, {reinterpret_cast<std::uint8_t*>(bytes.data()) + before, kPiece});
    bytes.resize(before + got);
    readTo += static_cast<std::int64_t>(got);
    if (got == 0) break;
    passOn();
  }
  bytes += memory_;
  passOn();
}

}  // namespace quillmoor::zip
