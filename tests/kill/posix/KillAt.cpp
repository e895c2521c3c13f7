// Preloaded into a program: kills it at the n-th of the calls that change names, without any clean-up. n is
// QUILLMOOR_KILL_AT.
#include <dlfcn.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>

namespace {

void countCall() {
  static const char* const text = std::getenv("QUILLMOOR_KILL_AT");
  static const long killAt = text ? std::strtol(text, nullptr, 10) : 0;
  static std::atomic<long> calls{0};
  if (++calls == killAt) ::kill(::getpid(), SIGKILL);
}

template <class Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

int rename(const char* from, const char* to) noexcept {
  static auto* const call = next<int(const char*, const char*)>("rename");
  countCall();
  return call(from, to);
}

int unlink(const char* path) noexcept {
  static auto* const call = next<int(const char*)>("unlink");
  countCall();
  return call(path);
}

int remove(const char* path) noexcept {
  static auto* const call = next<int(const char*)>("remove");
  countCall();
  return call(path);
}

int mkdir(const char* path, mode_t mode) noexcept {
  static auto* const call = next<int(const char*, mode_t)>("mkdir");
  countCall();
  return call(path, mode);
}

// By another name here, since the headers have a structure of this one.
int lockFile(int file, int operation) noexcept __asm__("flock");
int lockFile(int file, int operation) noexcept {
  static auto* const call = next<int(int, int)>("flock");
  countCall();
  return call(file, operation);
}
}
