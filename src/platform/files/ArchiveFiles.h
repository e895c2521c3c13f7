// What packing and unpacking an archive ask of the file system. Paths are UTF-8 (on Linux: the bytes they
// are) and may be of any length. Failures are raised as std::system_error whose text names the file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

namespace quillmoor {

/// Which system's attributes are meant by `FileState::attributes`, as the zip format numbers them: 0 MS-DOS
/// and Windows, 3 Unix.
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

enum class FileKind { file, folder, link, special };

/// Calls `item` for everything in the folder but "." and "..", in no order. `link` says whether the path
/// itself may be a symbolic link.
void readFolder(const std::string& path, bool mayBeLink,
                const std::function<void(const std::string& name, FileKind kind)>& item);

FileState folderState(const std::string& path);

/// False when one of them is not there.
bool sameFolder(const std::string& a, const std::string& b);

/// A file that is read. Another program may write it meanwhile.
class InputFile {
 public:
  /// Raises when it is no ordinary file; `mayBeLink` says whether the path itself may be a symbolic link.
  /// Windows tells that only just after the file was opened.
  InputFile(const std::string& path, bool mayBeLink);
  ~InputFile();
  InputFile(InputFile&& other) noexcept;
  InputFile& operator=(InputFile&&) = delete;

  FileState state() const;
  /// Up to as many bytes as `bytes` holds, from where the last `read` ended; fewer only at the end of the
  /// file.
  std::size_t read(std::span<std::uint8_t> bytes);
  /// The same from `offset`.
  std::size_t readAt(std::int64_t offset, std::span<std::uint8_t> bytes) const;

 private:
  std::string path_;
  std::intptr_t handle_;
  std::int64_t position_ = 0;
};

/// A new file that is written; raises when something stands under its name.
class OutputFile {
 public:
  explicit OutputFile(const std::string& path, bool executable = false);
  /// Closes and keeps what was written.
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  void write(std::span<const std::uint8_t> bytes);
  /// Writes over what stands at `offset`; the place of `write` stays at the end.
  void writeAt(std::int64_t offset, std::span<const std::uint8_t> bytes);
  std::size_t readAt(std::int64_t offset, std::span<std::uint8_t> bytes) const;
  /// Raises what closing brings to light (a full disk that is far away).
  void close();

  /// Writes over bytes of a file that stands there.
  static void patch(const std::string& path, std::int64_t offset, std::span<const std::uint8_t> bytes);

 private:
  std::string path_;
  std::intptr_t handle_;
  std::int64_t size_ = 0;
};

/// Gives a file or folder the time of its last change, and the attributes that `hostSystem` says how to read,
/// as far as the system has them; never the right to run under another user. Raises after it has tried both.
void restoreState(const std::string& path, const FileState& state, std::uint8_t hostSystem);

/// False where `renameFile` would refuse a target of that name for what it is: a folder, or on Windows a file
/// that may not be written.
bool mayBeReplaced(const std::string& path);
/// Creates one folder; raises when something stands under its name.
void createFolder(const std::string& path);
/// Replaces what stands under `to` if that is a file.
void renameFile(const std::string& from, const std::string& to);
/// False when there was none or it cannot be removed.
bool removeFile(const std::string& path) noexcept;
/// What stands under that name itself (a link is not followed); nothing when there is none.
std::optional<FileKind> pathKind(const std::string& path);

}  // namespace quillmoor
