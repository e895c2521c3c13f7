#include "platform/system/Notices.h"

#include <cstdio>
#include <mutex>
#include <utility>

#include "platform/system/ProgramFolder.h"

namespace quillmoor {
namespace {

std::mutex guard;

NoticeSink& sinkInUse() {
  static NoticeSink sink;
  return sink;
}

}  // namespace

void SetNoticeSink(NoticeSink sink) {
  const std::lock_guard lock(guard);
  sinkInUse() = std::move(sink);
}

void Notice(const std::string& line) {
  const std::lock_guard lock(guard);
  if (sinkInUse()) return sinkInUse()(line);
  std::fprintf(stderr, "%s: %s\n", ProgramName().c_str(), line.c_str());
}

}  // namespace quillmoor
