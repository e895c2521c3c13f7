#include "platform/files/LocalFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

namespace quillmoor {

bool LocalPathExists(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0;
}

bool LocalFolderExists(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool CreateLocalFolder(const std::string& path) {
  return ::mkdir(path.c_str(), 0777) == 0;
}

bool RemoveLocalFile(const std::string& path) {
  return std::remove(path.c_str()) == 0;
}

bool FlushLocalFile(const std::string& path) {
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file < 0) return false;
  const bool flushed = ::fsync(file) == 0;
  ::close(file);
  return flushed;
}

bool LocalFileIsWritable(const std::string& path) {
  return ::access(path.c_str(), W_OK) == 0;
}

}  // namespace quillmoor
