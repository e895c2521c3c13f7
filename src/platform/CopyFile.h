// Files copied the fastest way that the system has, which appear whole or not at all.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <vector>

namespace quillmoor {

/// The folder of `to` must exist; a file that stands under `to` is replaced. Both UTF-8.
struct FileCopy {
  std::string from, to;
};

/// Copies the files. The copies keep the time of the last change, unless the target's file system refuses
/// that, and the permissions as far as the system copies them. They are written under temporary names beside
/// their targets, each is compared in size with what was copied, and when all are there they are renamed, in
/// the order given. Temporary files that a killed program has left there are removed.
///
/// Blocks, and calls `goOn` on the caller's thread at least every 20 ms; once that answers false the copying
/// is ended soon. It may be empty.
///
/// Raises std::system_error, whose text names the file, and then leaves what stood there: a source is no
/// file, is the very file that it should become, or has changed meanwhile; a copy cannot be written; it was
/// ended (std::errc::operation_canceled). Only where a rename fails may some targets be new and others old.
void CopyWholeFiles(const std::vector<FileCopy>& files, const std::function<bool()>& goOn);

// --- what the system does for it, without a pump; both raise std::system_error

/// Copies contents, time and permissions to the path `temporary`, where nothing stands. Looks at `ended` now
/// and then and raises operation_canceled once it is set. The caller removes what is there after an error.
void CopyFileTo(const std::string& temporary, const std::string& from, const std::atomic<bool>& ended);

/// Gives a file of the same folder the name `to`, replacing what stood there.
void RenameFileOver(const std::string& temporary, const std::string& to);

}  // namespace quillmoor
