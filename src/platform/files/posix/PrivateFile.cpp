#include "platform/files/PrivateFile.h"

#include <sys/stat.h>

#include <cerrno>
#include <mutex>
#include <set>
#include <string>
#include <system_error>

#include "platform/system/ErrorText.h"
#include "platform/system/Notices.h"

namespace quillmoor {
namespace {

constexpr mode_t kOthers = S_IRWXG | S_IRWXO;

/// True for a missing one, too.
bool isPrivate(const std::filesystem::path& path) {
  struct stat found {};
  return ::stat(path.c_str(), &found) != 0 || (found.st_mode & kOthers) == 0;
}

/// False, with errno set, when the permissions cannot be changed. Some file systems only seem to change them.
bool takeFromOthers(const std::filesystem::path& path, mode_t mode) {
  if (::chmod(path.c_str(), mode) != 0) return false;
  errno = EPERM;
  return isPrivate(path);
}

/// A program that runs for weeks stores settings with every key that is pressed: one Notice is enough.
bool reportedBefore(const std::filesystem::path& path) {
  static std::mutex guard;
  static std::set<std::filesystem::path> reported;
  const std::lock_guard lock(guard);
  return !reported.insert(path).second;
}

void reportStillReadable(const std::filesystem::path& path) {
  const std::error_code error(errno, std::generic_category());
  if (reportedBefore(path)) return;
  Notice("Other users may read " + path.string() +
         ", and its permissions cannot be changed: " + ErrorText(error) + ".");
}

void reportNowPrivate(const std::filesystem::path& path, const char* mode) {
  Notice("Other users could read " + path.string() + ". Its permissions are now " + mode + ": only you can.");
}

}  // namespace

void WritePrivateFile(const std::string& file, std::string_view bytes, AtomicFile::Survives survives) {
  const bool open = !isPrivate(file);
  // Before the bytes are written. Another user's file is replaced by our own, whose permissions can be
  // changed then.
  if (open) takeFromOthers(file, 0600);
  AtomicFile whole(file, survives, AtomicFile::Readers::owner);
  whole.write(bytes);
  whole.commit();
  if (!open) return;
  takeFromOthers(file, 0600) ? reportNowPrivate(file, "0600") : reportStillReadable(file);
}

void MakePrivateFolder(const std::filesystem::path& folder) {
  if (!folder.parent_path().empty()) std::filesystem::create_directories(folder.parent_path());
  if (::mkdir(folder.c_str(), 0700) == 0) return;
  const int error = errno;
  if (!std::filesystem::is_directory(folder))
    throw std::system_error(error, std::generic_category(), "cannot create the folder " + folder.string());
  if (isPrivate(folder)) return;
  takeFromOthers(folder, 0700) ? reportNowPrivate(folder, "0700") : reportStillReadable(folder);
}

}  // namespace quillmoor
