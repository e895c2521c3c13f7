// File descriptors that are closed with their owner, and what all calls of the system that take them need.
#pragma once

#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

namespace quillmoor {

class Descriptor {
 public:
  /// Takes what open(2) returns: -1 is no descriptor.
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  explicit operator bool() const { return number_ >= 0; }
  int get() const { return number_; }
  int release() { return std::exchange(number_, -1); }

 private:
  int number_;
};

/// Raises std::system_error: "WHAT PATH: the system's own words".
[[noreturn]] inline void RaiseError(const char* what, const std::string& path, int error = errno) {
  throw std::system_error(error, std::generic_category(), std::string(what) + " " + path);
}

/// flock(2), repeated when a signal interrupts it.
inline int LockFile(int file, int operation) {
  int result = 0;
  while ((result = ::flock(file, operation)) != 0 && errno == EINTR) {
  }
  return result;
}

}  // namespace quillmoor
