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
/// that, and the permissions as far as the system copies them. They are written in a hidden folder beside
/// their targets, each is compared in size with what was copied, and when all are there they get their names,
/// the last of them at the end (see giveSetItsNames). What a killed program has left there is removed, or put
/// back if it is of a former set.
///
/// Blocks, and calls `goOn` on the caller's thread at least every 20 ms; once that answers false the copying
/// is ended soon. It may be empty.
///
/// Raises std::system_error, whose text names the file, and then leaves what stood there: a source is no
/// file, is the very file that it should become, or has changed meanwhile; a copy cannot be written; it was
/// ended (std::errc::operation_canceled); a target cannot be replaced. Only where something also keeps a
/// former set from being put back does that wait in its folder for the next copy.
void CopyWholeFiles(const std::vector<FileCopy>& files, const std::function<bool()>& goOn);

// --- what the system does for it, without a pump

/// Copies contents, time and permissions to the path `temporary`, where nothing stands. Looks at `ended` now
/// and then and raises operation_canceled once it is set; any other error is a std::system_error too. The
/// caller removes what is there then.
void CopyFileTo(const std::string& temporary, const std::string& from, const std::atomic<bool>& ended);

}  // namespace quillmoor
