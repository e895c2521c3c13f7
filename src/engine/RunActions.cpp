#include "engine/RunActions.h"

#include "engine/LogColours.h"

namespace quillmoor {
namespace {

void sayNotThere(RunLog& log) {
  log.AppendLog("Error: This build cannot start programs or call addresses.\r\n", log_colour::kError, true);
}

}  // namespace

void NoRunActions::RunBeforeActions(RunLog& log) {
  if (!settings_.RunBefore.empty() || !settings_.ConnectBefore.empty()) sayNotThere(log);
}

void NoRunActions::RunAfterActions(RunLog& log) {
  if (!settings_.RunAfter.empty() || !settings_.ConnectAfter.empty()) sayNotThere(log);
}

void NoRunActions::RunProfileActions(const RunProfileFields& profile, RunLog& log) {
  if (!profile.RunProgram.empty() || !profile.RunURL.empty()) sayNotThere(log);
}

}  // namespace quillmoor
