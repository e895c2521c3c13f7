#include "platform/ZipArchive.h"

namespace quillmoor {

class ZipArchive::Impl {};

ZipArchive::ZipArchive() : impl_(std::make_unique<Impl>()) {}
ZipArchive::~ZipArchive() = default;

void ZipArchive::addFiles(const std::string&, bool, const std::optional<std::string>&) {}

ZipResult ZipArchive::write(const std::string& path, const std::optional<ZipSegmentOptions>&) {
  throw ZipError(ZipErrorNumber::cannotWrite, "cannot write " + path + ": this build makes no archives yet");
}

ZipResult ZipArchive::writeSelfExtracting(const std::string& path, const std::string&,
                                          const std::optional<ZipSegmentOptions>& segments) {
  return write(path, segments);
}

bool ZipArchive::busy() const {
  return false;
}

void ZipArchive::abort() {}

}  // namespace quillmoor
