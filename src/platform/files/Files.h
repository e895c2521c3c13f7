// Asking for files and folders, changing their names, and reading and writing them. Paths are texts as
// LocalPath reads them, of any length.
//
// A function that returns bool, std::optional or std::error_code reports a failure by that. Every other one
// raises std::system_error, whose text names the file.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <system_error>
#include <utility>

namespace quillmoor {

// --- asking

enum class FileKind { file, folder, link, special };

/// The kind of what has this name, a link itself included; nothing when there is none.
std::optional<FileKind> pathKind(const std::string& path);

/// Links are followed.
bool pathExists(const std::string& path);
bool folderExists(const std::string& path);

/// The user may write to the file: it is there and neither its permissions nor its attributes forbid it.
bool mayBeWritten(const std::string& path);

/// False where `renameFile` would refuse a target for what it is: a folder, or on Windows a read-only file.
bool mayBeReplaced(const std::string& path);

/// Both are there and are the same file or folder.
bool sameFile(const std::string& a, const std::string& b);

/// Which system's attributes `FileState::attributes` holds, as the zip format numbers them: 0 MS-DOS and
/// Windows, 3 Unix.
extern const std::uint8_t kArchiveHostSystem;

struct FileState {
  std::int64_t size = 0;
  std::int64_t modifiedSeconds = 0;  ///< since 1970, UTC
  std::int64_t modifiedNanoseconds = 0;
  /// As in the external attributes of a zip entry: DOS attributes in the low byte, on Unix the mode in the
  /// upper half.
  std::uint32_t attributes = 0;

  bool operator==(const FileState&) const = default;
};

/// Of a link itself.
FileState fileState(const std::string& path);

/// In UTC, to the second. Where the file system keeps no creation time, it is that of the last change.
struct FileTimes {
  std::chrono::sys_seconds created, accessed, modified;
};

/// Nothing for a folder, and for a file that cannot be read.
std::optional<FileTimes> fileTimes(const std::string& path);

/// Calls `item` for everything in the folder but "." and "..", in no order. `mayBeLink`: the path itself may
/// be a symbolic link.
void readFolder(const std::string& path, bool mayBeLink,
                const std::function<void(const std::string& name, FileKind kind)>& item);

// --- changing

/// Creates one folder. It is an error when something has this name.
std::error_code createFolder(const std::string& path);

/// Replaces `to` if that is a file. On Windows retries for half a second, without the pump, since virus
/// scanners and indexers open a file that was just written for a moment. `throughToDisk`: returns when the
/// disk has the new name, where the system can wait for that.
void renameFile(const std::string& from, const std::string& to, bool throughToDisk = false);

/// False for a folder.
bool removeFile(const std::string& path) noexcept;

/// The folder must be empty.
bool removeFolder(const std::string& path) noexcept;

/// Has the system write the file's contents to the disk, so that a loss of power cannot cost them any more.
bool flushFile(const std::string& path);

/// Sets the time of the last change alone. False for a folder, and for a file that may not be written.
bool setModifiedTime(const std::string& path, std::chrono::sys_seconds modified);

/// Sets the time of the last change of a file or folder, and the attributes of the system `hostSystem` as far
/// as this one has them; never the right to run as another user. Raises after it has tried both.
void restoreState(const std::string& path, const FileState& state, std::uint8_t hostSystem);

// --- reading and writing

/// A file that is open; closed at the end of its life.
class OpenFile {
 public:
  ~OpenFile();
  OpenFile(OpenFile&& other) noexcept
      : path_(std::move(other.path_)),
        handle_(std::exchange(other.handle_, kNone)),
        position_(other.position_) {}
  OpenFile& operator=(OpenFile&&) = delete;

  FileState state() const;
  /// As many bytes from `offset` as `bytes` holds; fewer only at the end of the file.
  std::size_t readAt(std::int64_t offset, std::span<std::uint8_t> bytes) const;

 protected:
  static constexpr std::intptr_t kNone = -1;

  OpenFile() = default;
  OpenFile(std::string path, std::intptr_t handle) : path_(std::move(path)), handle_(handle) {}
  void writeAt(std::int64_t offset, std::span<const std::uint8_t> bytes);
  void write(std::span<const std::uint8_t> bytes) {
    writeAt(position_, bytes);
    position_ += static_cast<std::int64_t>(bytes.size());
  }
  /// Raises what the system reports only now (a full disk of a share).
  void close();

  std::string path_;
  std::intptr_t handle_ = kNone;
  std::int64_t position_ = 0;
};

/// A file that is read. Another program may write it meanwhile.
class InputFile : public OpenFile {
 public:
  /// Raises when it is no ordinary file. `mayBeLink`: the path itself may be a symbolic link; Windows tells
  /// only just after the file was opened.
  InputFile(const std::string& path, bool mayBeLink);

  /// As `readAt`, from where the last call ended.
  std::size_t read(std::span<std::uint8_t> bytes) {
    const std::size_t got = readAt(position_, bytes);
    position_ += static_cast<std::int64_t>(got);
    return got;
  }
};

/// A file that is written.
class OutputFile : public OpenFile {
 public:
  /// Creates it; raises when something has this name.
  explicit OutputFile(const std::string& path, bool executable = false);
  /// Opens one that is there, to write over bytes of it.
  static OutputFile existing(const std::string& path);

  using OpenFile::close;
  /// At the end of what `write` has written.
  using OpenFile::write;
  using OpenFile::writeAt;

 private:
  OutputFile(const std::string& path, std::intptr_t handle) : OpenFile(path, handle) {}
};

}  // namespace quillmoor
