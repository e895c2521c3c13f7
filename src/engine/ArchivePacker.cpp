#include "engine/ArchivePacker.h"

namespace quillmoor {

ZipResult ZipArchivePacker::pack(const PackingOrder& order) {
  zip_.onProgress = order.onProgress;
  zip_.onError = order.onError;
  zip_.addFiles(order.pattern, true, order.password);
  if (order.stubPath.empty()) return zip_.write(order.path, order.segments);
  return zip_.writeSelfExtracting(order.path, order.stubPath, order.segments);
}

}  // namespace quillmoor
