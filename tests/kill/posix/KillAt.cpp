// Preloaded into a program: kills it at the n-th of the calls that change names, without any clean-up. n is
// QUILLMOOR_KILL_AT.
#include <dlfcn.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>

namespace {

std::atomic<long> calls{0};

/// Counts the call and passes it on to the system's function.
template <class... Arguments>
int counted(const char* name, Arguments... arguments) {
  static const char* const text = std::getenv("QUILLMOOR_KILL_AT");
  static const long killAt = text ? std::strtol(text, nullptr, 10) : 0;
  if (++calls == killAt) ::kill(::getpid(), SIGKILL);
  return reinterpret_cast<int (*)(Arguments...)>(::dlsym(RTLD_NEXT, name))(arguments...);
}

}  // namespace

extern "C" {

int rename(const char* from, const char* to) noexcept {
  return counted("rename", from, to);
}
int unlink(const char* path) noexcept {
  return counted("unlink", path);
}
int remove(const char* path) noexcept {
  return counted("remove", path);
}
int mkdir(const char* path, mode_t mode) noexcept {
  return counted("mkdir", path, mode);
}
// By another name here, since the headers have a structure of this one.
int lockFile(int file, int operation) noexcept __asm__("flock");
int lockFile(int file, int operation) noexcept {
  return counted("flock", file, operation);
}
}
