#include "platform/files/ArchiveFiles.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <system_error>
#include <utility>

namespace quillmoor {

const std::uint8_t kArchiveHostSystem = 3;

namespace {

[[noreturn]] void fail(const char* what, const std::string& path, int error = errno) {
  throw std::system_error(error, std::generic_category(), std::string(what) + " " + path);
}

FileState stateOf(const struct stat& status) {
  std::uint32_t attributes = static_cast<std::uint32_t>(status.st_mode) << 16;
  if (S_ISDIR(status.st_mode)) attributes |= 0x10;
  if ((status.st_mode & S_IWUSR) == 0) attributes |= 0x01;
  return {S_ISDIR(status.st_mode) ? 0 : static_cast<std::int64_t>(status.st_size), status.st_mtim.tv_sec,
          status.st_mtim.tv_nsec, attributes};
}

FileKind kindOf(mode_t mode) {
  if (S_ISREG(mode)) return FileKind::file;
  if (S_ISDIR(mode)) return FileKind::folder;
  return S_ISLNK(mode) ? FileKind::link : FileKind::special;
}

void writeAll(int file, const std::string& path, std::int64_t offset, std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::pwrite(file, bytes.data(), bytes.size(), offset);
    if (written < 0) {
      if (errno == EINTR) continue;
      fail("cannot write", path);
    }
    bytes = bytes.subspan(static_cast<std::size_t>(written));
    offset += written;
  }
}

std::size_t readAll(int file, const std::string& path, std::int64_t offset, std::span<std::uint8_t> bytes) {
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t got =
        ::pread(file, bytes.data() + done, bytes.size() - done, offset + static_cast<std::int64_t>(done));
    if (got == 0) break;
    if (got < 0) {
      if (errno == EINTR) continue;
      fail("cannot read", path);
    }
    done += static_cast<std::size_t>(got);
  }
  return done;
}

}  // namespace

void readFolder(const std::string& path, bool mayBeLink,
                const std::function<void(const std::string&, FileKind)>& item) {
  const int descriptor =
      ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | (mayBeLink ? 0 : O_NOFOLLOW));
  if (descriptor < 0) fail("cannot open", path);
  struct Close {
    void operator()(DIR* stream) const { ::closedir(stream); }
  };
  const std::unique_ptr<DIR, Close> folder(::fdopendir(descriptor));
  if (!folder) {
    const int error = errno;
    ::close(descriptor);
    fail("cannot open", path, error);
  }
  for (;;) {
    errno = 0;
    const dirent* const entry = ::readdir(folder.get());
    if (!entry) break;
    const std::string name = entry->d_name;
    if (name == "." || name == "..") continue;
    FileKind kind = FileKind::special;
    if (entry->d_type == DT_UNKNOWN) {
      struct stat status {};
      if (::fstatat(descriptor, entry->d_name, &status, AT_SYMLINK_NOFOLLOW) != 0)
        continue;  // gone meanwhile
      kind = kindOf(status.st_mode);
    } else {
      kind = kindOf(static_cast<mode_t>(DTTOIF(entry->d_type)));
    }
    item(name, kind);
  }
  if (errno != 0) fail("cannot read", path);
}

FileState folderState(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) fail("cannot read", path);
  return stateOf(status);
}

bool sameFolder(const std::string& a, const std::string& b) {
  struct stat first {
  }, second{};
  return ::stat(a.c_str(), &first) == 0 && ::stat(b.c_str(), &second) == 0 && first.st_dev == second.st_dev &&
         first.st_ino == second.st_ino;
}

// O_NONBLOCK: a named pipe that has come into the file's place must not hold the run up.
InputFile::InputFile(const std::string& path, bool mayBeLink)
    : path_(path),
      handle_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | (mayBeLink ? 0 : O_NOFOLLOW))) {
  if (handle_ < 0) fail("cannot open", path);
  struct stat status {};
  const bool known = ::fstat(static_cast<int>(handle_), &status) == 0;
  const int error = known ? EINVAL : errno;
  if (known && S_ISREG(status.st_mode)) return;
  ::close(static_cast<int>(handle_));
  fail("cannot read", path, error);
}

InputFile::~InputFile() {
  if (handle_ >= 0) ::close(static_cast<int>(handle_));
}

InputFile::InputFile(InputFile&& other) noexcept
    : path_(std::move(other.path_)), handle_(std::exchange(other.handle_, -1)), position_(other.position_) {}

FileState InputFile::state() const {
  struct stat status {};
  if (::fstat(static_cast<int>(handle_), &status) != 0) fail("cannot read", path_);
  return stateOf(status);
}

std::size_t InputFile::read(std::span<std::uint8_t> bytes) {
  const std::size_t got = readAll(static_cast<int>(handle_), path_, position_, bytes);
  position_ += static_cast<std::int64_t>(got);
  return got;
}

std::size_t InputFile::readAt(std::int64_t offset, std::span<std::uint8_t> bytes) const {
  return readAll(static_cast<int>(handle_), path_, offset, bytes);
}

OutputFile::OutputFile(const std::string& path, bool executable)
    : path_(path),
      handle_(::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, executable ? 0777 : 0666)) {
  if (handle_ < 0) fail("cannot create", path);
}

OutputFile::~OutputFile() {
  if (handle_ >= 0) ::close(static_cast<int>(handle_));
}

void OutputFile::write(std::span<const std::uint8_t> bytes) {
  writeAll(static_cast<int>(handle_), path_, size_, bytes);
  size_ += static_cast<std::int64_t>(bytes.size());
}

void OutputFile::writeAt(std::int64_t offset, std::span<const std::uint8_t> bytes) {
  writeAll(static_cast<int>(handle_), path_, offset, bytes);
}

std::size_t OutputFile::readAt(std::int64_t offset, std::span<std::uint8_t> bytes) const {
  return readAll(static_cast<int>(handle_), path_, offset, bytes);
}

void OutputFile::close() {
  if (::close(static_cast<int>(std::exchange(handle_, -1))) != 0) fail("cannot write", path_);
}

void OutputFile::patch(const std::string& path, std::int64_t offset, std::span<const std::uint8_t> bytes) {
  const int file = ::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOFOLLOW);
  if (file < 0) fail("cannot write", path);
  struct Close {
    int file;
    ~Close() { ::close(file); }
  } const closeAtEnd{file};
  writeAll(file, path, offset, bytes);
}

void restoreState(const std::string& path, const FileState& state, std::uint8_t hostSystem) {
  const timespec times[2] = {{0, UTIME_OMIT}, {state.modifiedSeconds, state.modifiedNanoseconds}};
  const bool timed = ::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW) == 0;
  const int error = errno;
  if (hostSystem == kArchiveHostSystem && ::chmod(path.c_str(), state.attributes >> 16 & 0777) != 0)
    fail("cannot set the permissions of", path);
  if (!timed) fail("cannot set the time of", path, error);
}

bool mayBeReplaced(const std::string& path) {
  return pathKind(path) != FileKind::folder;
}

void createFolder(const std::string& path) {
  if (::mkdir(path.c_str(), 0777) != 0) fail("cannot create", path);
}

void renameFile(const std::string& from, const std::string& to) {
  if (::rename(from.c_str(), to.c_str()) != 0) fail("cannot write", to);
}

bool removeFile(const std::string& path) noexcept {
  return ::unlink(path.c_str()) == 0;
}

std::optional<FileKind> pathKind(const std::string& path) {
  struct stat status {};
  if (::lstat(path.c_str(), &status) != 0) return std::nullopt;
  return kindOf(status.st_mode);
}

}  // namespace quillmoor
