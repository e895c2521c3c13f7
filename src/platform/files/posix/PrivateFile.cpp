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

/// True for one that is missing, too.
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

/// A program that runs for weeks stores settings with every key that is pressed.
bool saidBefore(const std::filesystem::path& path) {
  static std::mutex guard;
  static std::set<std::filesystem::path> said;
  const std::lock_guard lock(guard);
  return !said.insert(path).second;
}

void sayThatOthersCanRead(const std::filesystem::path& path) {
  const std::error_code error(errno, std::generic_category());
  if (saidBefore(path)) return;
  Notice("Other users may read " + path.string() +
         ", and its permissions cannot be changed: " + ErrorText(error) + ".");
}

void sayWhatWasChanged(const std::filesystem::path& path, const char* mode) {
  Notice("Other users could read " + path.string() + ". Its permissions are now " + mode + ": only you can.");
}

}  // namespace

void WritePrivateFile(const std::filesystem::path& file, std::string_view bytes,
                      WholeFile::Survives survives) {
  const bool open = !isPrivate(file);
  // Before the bytes are there. Another user's file is replaced by one of our own, which can then be changed.
  if (open) takeFromOthers(file, 0600);
  WholeFile whole(file, survives, WholeFile::Readers::owner);
  whole.write(bytes);
  whole.commit();
  if (!open) return;
  takeFromOthers(file, 0600) ? sayWhatWasChanged(file, "0600") : sayThatOthersCanRead(file);
}

void MakePrivateFolder(const std::filesystem::path& folder) {
  if (!folder.parent_path().empty()) std::filesystem::create_directories(folder.parent_path());
  if (::mkdir(folder.c_str(), 0700) == 0) return;
  const int error = errno;
  if (!std::filesystem::is_directory(folder))
    throw std::system_error(error, std::generic_category(), "cannot make the folder " + folder.string());
  if (isPrivate(folder)) return;
  takeFromOthers(folder, 0700) ? sayWhatWasChanged(folder, "0700") : sayThatOthersCanRead(folder);
}

}  // namespace quillmoor
