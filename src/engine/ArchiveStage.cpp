#include "engine/ArchiveStage.h"

#include "engine/LogColours.h"

namespace quillmoor {

void NoArchiveStage::CreateArchive(const std::string&, const RunState&, RunLog& log) {
  if (settings_.CreateZip != 1 && settings_.ZipCopies.empty()) return;
  log.AppendLog("Error: This build makes no archives.\r\n", log_colour::kError, true);
}

}  // namespace quillmoor
