// Is a backup run in progress? The one answer that the run and the scheduler share.
#pragma once

namespace quillmoor {

/// Set by whoever starts a run, cleared at its end and by a confirmed Stop. A stopped run may still be
/// unwinding when this is false: see RunController::active. Read and written on the program's one thread.
inline bool BackupRunning = false;

}  // namespace quillmoor
