// What the program asks of the file system by itself: is it there, make it, remove it. Paths are texts as
// LocalPath reads them; on Windows they may be longer than 260 characters. Links are followed.
#pragma once

#include <string>

namespace quillmoor {

/// Something bears this name, whatever its kind and attributes.
bool LocalPathExists(const std::string& path);

bool LocalFolderExists(const std::string& path);

/// Makes one folder; its parent must exist. False when it could not be made, or was there before.
bool CreateLocalFolder(const std::string& path);

/// Removes a file, a link or an empty folder. False when there was none or it is still there.
bool RemoveLocalFile(const std::string& path);

/// Has the system write the file's contents to the disk, so that a loss of power cannot cost them any more.
/// False when it could not.
bool FlushLocalFile(const std::string& path);

/// The user may write to the file: it is there, and neither its permissions nor its attributes forbid it.
bool LocalFileIsWritable(const std::string& path);

}  // namespace quillmoor
