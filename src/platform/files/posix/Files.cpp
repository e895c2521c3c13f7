#include "platform/files/Files.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <memory>

#include "platform/files/posix/Descriptor.h"

namespace quillmoor {

const std::uint8_t kArchiveHostSystem = 3;

namespace {

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

/// O_NONBLOCK: a named pipe in the file's place must not hold the run up.
int openPath(const std::string& path, int flags) {
  return ::open(path.c_str(), flags | O_CLOEXEC | O_NONBLOCK);
}

int number(std::intptr_t handle) {
  return static_cast<int>(handle);
}

std::chrono::sys_seconds seconds(const statx_timestamp& time) {
  return std::chrono::sys_seconds(std::chrono::seconds(time.tv_sec));
}

}  // namespace

std::optional<FileKind> pathKind(const std::string& path) {
  struct stat status {};
  if (::lstat(path.c_str(), &status) != 0) return std::nullopt;
  return kindOf(status.st_mode);
}

bool pathExists(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0;
}

bool folderExists(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool mayBeWritten(const std::string& path) {
  return ::access(path.c_str(), W_OK) == 0;
}

bool mayBeReplaced(const std::string& path) {
  return pathKind(path) != FileKind::folder;
}

bool sameFile(const std::string& a, const std::string& b) {
  struct stat first {
  }, second{};
  return ::stat(a.c_str(), &first) == 0 && ::stat(b.c_str(), &second) == 0 && first.st_dev == second.st_dev &&
         first.st_ino == second.st_ino;
}

FileState fileState(const std::string& path) {
  struct stat status {};
  if (::lstat(path.c_str(), &status) != 0) RaiseError("cannot read", path);
  return stateOf(status);
}

std::optional<FileTimes> fileTimes(const std::string& path) {
  const Descriptor file(openPath(path, O_RDONLY));
  struct statx status {};
  constexpr unsigned kWanted = STATX_BASIC_STATS | STATX_BTIME;
  if (!file || ::statx(file.get(), "", AT_EMPTY_PATH, kWanted, &status) != 0 || S_ISDIR(status.stx_mode))
    return std::nullopt;
  const bool hasCreated = (status.stx_mask & STATX_BTIME) != 0;
  return FileTimes{seconds(hasCreated ? status.stx_btime : status.stx_mtime), seconds(status.stx_atime),
                   seconds(status.stx_mtime)};
}

void readFolder(const std::string& path, bool mayBeLink,
                const std::function<void(const std::string&, FileKind)>& item) {
  Descriptor descriptor(openPath(path, O_RDONLY | O_DIRECTORY | (mayBeLink ? 0 : O_NOFOLLOW)));
  struct Close {
    void operator()(DIR* stream) const { ::closedir(stream); }
  };
  const std::unique_ptr<DIR, Close> folder(descriptor ? ::fdopendir(descriptor.get()) : nullptr);
  if (!folder) RaiseError("cannot open", path);
  descriptor.release();
  for (;;) {
    errno = 0;
    const dirent* const entry = ::readdir(folder.get());
    if (!entry) break;
    const std::string name = entry->d_name;
    if (name == "." || name == "..") continue;
    auto mode = static_cast<mode_t>(DTTOIF(entry->d_type));
    if (entry->d_type == DT_UNKNOWN) {
      struct stat status {};
      if (::fstatat(::dirfd(folder.get()), entry->d_name, &status, AT_SYMLINK_NOFOLLOW) != 0)
        continue;  // gone meanwhile
      mode = status.st_mode;
    }
    item(name, kindOf(mode));
  }
  if (errno != 0) RaiseError("cannot read", path);
}

std::error_code createFolder(const std::string& path) {
  if (::mkdir(path.c_str(), 0777) == 0) return {};
  return {errno, std::generic_category()};
}

void renameFile(const std::string& from, const std::string& to, bool) {
  if (::rename(from.c_str(), to.c_str()) != 0) RaiseError("cannot write", to);
}

bool removeFile(const std::string& path) noexcept {
  return ::unlink(path.c_str()) == 0;
}

bool removeFolder(const std::string& path) noexcept {
  return ::rmdir(path.c_str()) == 0;
}

bool flushFile(const std::string& path) {
  const Descriptor file(openPath(path, O_RDONLY));
  return file && ::fsync(file.get()) == 0;
}

bool setModifiedTime(const std::string& path, std::chrono::sys_seconds modified) {
  const Descriptor file(openPath(path, O_WRONLY));
  const timespec times[2] = {{0, UTIME_OMIT}, {static_cast<time_t>(modified.time_since_epoch().count()), 0}};
  return file && ::futimens(file.get(), times) == 0;
}

void restoreState(const std::string& path, const FileState& state, std::uint8_t hostSystem) {
  const timespec times[2] = {{0, UTIME_OMIT}, {state.modifiedSeconds, state.modifiedNanoseconds}};
  const bool timed = ::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW) == 0;
  const int error = errno;
  if (hostSystem == kArchiveHostSystem && ::chmod(path.c_str(), state.attributes >> 16 & 0777) != 0)
    RaiseError("cannot set the permissions of", path);
  if (!timed) RaiseError("cannot set the time of", path, error);
}

OpenFile::~OpenFile() {
  if (handle_ != kNone) ::close(number(handle_));
}

FileState OpenFile::state() const {
  struct stat status {};
  if (::fstat(number(handle_), &status) != 0) RaiseError("cannot read", path_);
  return stateOf(status);
}

std::size_t OpenFile::readAt(std::int64_t offset, std::span<std::uint8_t> bytes) const {
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t got = ::pread(number(handle_), bytes.data() + done, bytes.size() - done,
                                offset + static_cast<std::int64_t>(done));
    if (got == 0) break;
    if (got > 0) {
      done += static_cast<std::size_t>(got);
    } else if (errno != EINTR) {
      RaiseError("cannot read", path_);
    }
  }
  return done;
}

void OpenFile::writeAt(std::int64_t offset, std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::pwrite(number(handle_), bytes.data(), bytes.size(), offset);
    if (written >= 0) {
      bytes = bytes.subspan(static_cast<std::size_t>(written));
      offset += written;
    } else if (errno != EINTR) {
      RaiseError("cannot write", path_);
    }
  }
}

void OpenFile::close() {
  if (::close(number(std::exchange(handle_, kNone))) != 0) RaiseError("cannot write", path_);
}

InputFile::InputFile(const std::string& path, bool mayBeLink)
    : OpenFile(path, openPath(path, O_RDONLY | (mayBeLink ? 0 : O_NOFOLLOW))) {
  if (handle_ == kNone) RaiseError("cannot open", path);
  struct stat status {};
  if (::fstat(number(handle_), &status) != 0) RaiseError("cannot read", path);
  if (!S_ISREG(status.st_mode)) RaiseError("cannot read", path, EINVAL);
}

OutputFile::OutputFile(const std::string& path, bool executable)
    : OpenFile(path, ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, executable ? 0777 : 0666)) {
  if (handle_ == kNone) RaiseError("cannot create", path);
}

OutputFile OutputFile::existing(const std::string& path) {
  OutputFile file(path, std::intptr_t{openPath(path, O_WRONLY | O_NOFOLLOW)});
  if (file.handle_ == kNone) RaiseError("cannot write", path);
  return file;
}

}  // namespace quillmoor
