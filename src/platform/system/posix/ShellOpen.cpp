#include "platform/system/ShellOpen.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <optional>
#include <sstream>

namespace quillmoor {
namespace {

enum Result {
  kNotFound = 2,
  kDenied = 5,
  kNoRoom = 8,
  kNoProgram = 11,
  kNothingToOpenItWith = 31,
  kStarted = 33
};

int resultOf(int error) {
  switch (error) {
    case 0:
      return kStarted;
    case ENOENT:
    case ENOTDIR:
      return kNotFound;
    case EACCES:
    case EPERM:
      return kDenied;
    case ENOEXEC:
      return kNoProgram;
    default:
      return kNoRoom;
  }
}

bool isProgram(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
         ::faccessat(AT_FDCWD, path.c_str(), X_OK, AT_EACCESS) == 0;
}

/// Finds a plain name in PATH. Skips empty parts of PATH, which mean the current folder.
std::optional<std::string> programInPath(const std::string& name) {
  const char* const path = std::getenv("PATH");
  std::istringstream folders(path ? path : "/usr/local/bin:/usr/bin:/bin");
  for (std::string folder; std::getline(folders, folder, ':');) {
    if (folder.empty()) continue;
    const std::string program = folder + "/" + name;
    if (isProgram(program)) return program;
  }
  return std::nullopt;
}

// --- in the child: only async-signal-safe calls, as other threads of the program may hold locks

/// Keeps the started program from inheriting this one's descriptors.
void closeOnExecFrom(int first) {
  if (::close_range(static_cast<unsigned>(first), ~0U, CLOSE_RANGE_CLOEXEC) == 0) return;
  const long limit = ::sysconf(_SC_OPEN_MAX);  // for a kernel without close_range
  for (int number = first; number < (limit > 0 ? limit : 1024); ++number) {
    const int flags = ::fcntl(number, F_GETFD);
    if (flags >= 0) ::fcntl(number, F_SETFD, flags | FD_CLOEXEC);
  }
}

/// Ignored signals and the signal mask survive exec.
void restoreSignals() {
  struct sigaction usual {};
  usual.sa_handler = SIG_DFL;
  for (int number = 1; number < NSIG; ++number) ::sigaction(number, &usual, nullptr);
  sigset_t none;
  ::sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

[[noreturn]] void becomeProgram(char* const* arguments, int report) {
  restoreSignals();
  const int nowhere = ::open("/dev/null", O_RDWR);
  for (int number = 0; number <= 2 && nowhere >= 0; ++number) ::dup2(nowhere, number);
  closeOnExecFrom(3);
  ::execv(arguments[0], arguments);
  const int error = errno;
  const ssize_t written = ::write(report, &error, sizeof error);
  static_cast<void>(written);
  ::_exit(127);
}

// --- in this program

/// Starts the program; returns the error, 0 when it runs. Forks twice, so that the program's parent is init:
/// nothing needs to be reaped here, and no other child of this program is affected.
int start(const std::string& program, const std::string* argument) {
  char* const arguments[] = {const_cast<char*>(program.c_str()),
                             argument ? const_cast<char*>(argument->c_str()) : nullptr, nullptr};
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) return errno;
  // Above the standard descriptors, which the child replaces. Closed by a successful exec, which so reports
  // success.
  const int report = ::fcntl(ends[1], F_DUPFD_CLOEXEC, 3);
  ::close(ends[1]);
  const pid_t child = report < 0 ? -1 : ::fork();
  if (child < 0) {
    const int error = errno;
    ::close(ends[0]);
    if (report >= 0) ::close(report);
    return error;
  }
  if (child == 0) {
    ::setsid();
    const pid_t grandchild = ::fork();
    if (grandchild == 0) becomeProgram(arguments, report);
    ::_exit(grandchild < 0 ? 1 : 0);
  }
  ::close(report);
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  int error = 0;
  ssize_t got = 0;
  while ((got = ::read(ends[0], &error, sizeof error)) < 0 && errno == EINTR) {
  }
  ::close(ends[0]);
  if (got == sizeof error) return error;
  return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? 0 : EAGAIN;
}

}  // namespace

int ShellOpen(const std::string& target) {
  if (target.empty() || target.find('\0') != std::string::npos) return kNotFound;
  const bool plainName = target.find('/') == std::string::npos;
  if (isProgram(target)) return resultOf(start(plainName ? "./" + target : target, nullptr));
  if (plainName) {
    if (const auto program = programInPath(target)) return resultOf(start(*program, nullptr));
  }
  const auto opener = programInPath("xdg-open");
  if (!opener) return kNothingToOpenItWith;
  // Keeps xdg-open from taking the name for an option.
  const std::string argument = target.starts_with('-') ? "./" + target : target;
  return resultOf(start(*opener, &argument));
}

}  // namespace quillmoor
