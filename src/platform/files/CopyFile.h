// Copying files the fastest way that the system has; the copies appear whole or not at all.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <vector>

namespace quillmoor {

/// The folder of `to` must exist; a file `to` is replaced. Both are texts as LocalPath reads them.
struct FileCopy {
  std::string from, to;
};

/// Copies the files. The copies keep the time of the last change, unless the target's file system refuses
/// that, and the permissions as far as the system copies them. They are written in a hidden folder beside
/// their targets, compared in size with their sources, and when all are there renamed into place, the last of
/// the list at the end (see renameSetIntoPlace). What a killed program left there is removed, or moved back
/// if it is of a former set.
///
/// Blocks, and calls `goOn` on the caller's thread at least every 20 ms; soon after that has returned false,
/// the copying stops. It may be empty.
///
/// Raises std::system_error, whose text names the file, and leaves the former files: a source is not a file,
/// is the same file as its target, or has changed meanwhile; a copy cannot be written; it was stopped
/// (std::errc::operation_canceled); a target cannot be replaced. Only when a former set cannot be moved back
/// either does it wait in its folder for the next copy.
void CopyWholeFiles(const std::vector<FileCopy>& files, const std::function<bool()>& goOn);

// --- the system's part of it, without a pump

/// Copies contents, time and permissions to the path `temporary`, where nothing is. Polls `ended` and raises
/// operation_canceled once it is set; any other error is a std::system_error too. The caller then removes
/// what is there.
void CopyFileTo(const std::string& temporary, const std::string& from, const std::atomic<bool>& ended);

}  // namespace quillmoor
