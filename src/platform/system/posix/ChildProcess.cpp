#include "platform/system/posix/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <string_view>
#include <system_error>
#include <thread>

namespace quillmoor {
namespace {

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

std::vector<std::string> plainEnvironment() {
  std::vector<std::string> variables;
  for (char** at = environ; *at; ++at) {
    const std::string_view variable = *at;
    if (!variable.starts_with("LC_ALL=") && !variable.starts_with("LANGUAGE="))
      variables.emplace_back(variable);
  }
  variables.emplace_back("LC_ALL=C.UTF-8");
  return variables;
}

/// This program may have been started with SIGCHLD ignored; then the system keeps no exit status.
void keepExitStatuses() {
  struct sigaction action {};
  if (::sigaction(SIGCHLD, nullptr, &action) == 0 && action.sa_handler == SIG_IGN) ::signal(SIGCHLD, SIG_DFL);
}

struct FileActions {
  posix_spawn_file_actions_t value;
  FileActions() { ::posix_spawn_file_actions_init(&value); }
  ~FileActions() { ::posix_spawn_file_actions_destroy(&value); }
};

struct Attributes {
  posix_spawnattr_t value;
  Attributes() { ::posix_spawnattr_init(&value); }
  ~Attributes() { ::posix_spawnattr_destroy(&value); }
};

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& arguments, std::size_t mostOutput)
    : mostOutput_(mostOutput) {
  keepExitStatuses();
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "pipe");
  pipe_ = ends[0];
  ::fcntl(pipe_, F_SETFL, O_NONBLOCK);

  FileActions files;
  ::posix_spawn_file_actions_addopen(&files.value, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  ::posix_spawn_file_actions_adddup2(&files.value, ends[1], STDOUT_FILENO);
  ::posix_spawn_file_actions_addopen(&files.value, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  ::posix_spawn_file_actions_addclosefrom_np(&files.value, STDERR_FILENO + 1);
  Attributes attributes;
  sigset_t signals;
  ::sigemptyset(&signals);
  ::posix_spawnattr_setsigmask(&attributes.value, &signals);
  ::sigaddset(&signals, SIGPIPE);  // ignored by this program
  ::posix_spawnattr_setsigdefault(&attributes.value, &signals);
  ::posix_spawnattr_setpgroup(&attributes.value, 0);
  ::posix_spawnattr_setflags(&attributes.value,
                             POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);

  std::vector<std::string> words = arguments;
  std::vector<std::string> variables = plainEnvironment();
  const int error = ::posix_spawnp(&process_, words[0].c_str(), &files.value, &attributes.value,
                                   pointersTo(words).data(), pointersTo(variables).data());
  ::close(ends[1]);
  if (error == 0) return;
  ::close(pipe_);
  throw std::system_error(error, std::generic_category(), "cannot start " + words[0]);
}

ChildProcess::~ChildProcess() {
  if (process_ > 0) end();
  if (pipe_ >= 0) ::close(pipe_);
}

bool ChildProcess::poll() {
  if (process_ <= 0) return true;
  read();
  if (process_ <= 0) return true;
  if (!hasEnded(WNOHANG)) return false;
  read();  // its last output
  return true;
}

void ChildProcess::waitForOutput(std::chrono::milliseconds time) const {
  if (process_ <= 0) return;
  if (pipe_ < 0) return std::this_thread::sleep_for(time);
  pollfd waiting{pipe_, POLLIN, 0};
  ::poll(&waiting, 1, static_cast<int>(time.count()));
}

void ChildProcess::read() {
  char buffer[4096];
  while (pipe_ >= 0) {
    const ssize_t got = ::read(pipe_, buffer, sizeof buffer);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0 && errno == EAGAIN) return;
    if (got > 0) output_.append(buffer, static_cast<std::size_t>(got));
    if (got <= 0 || output_.size() > mostOutput_) {
      ::close(pipe_);
      pipe_ = -1;
    }
    if (output_.size() > mostOutput_) {
      output_.clear();
      if (process_ > 0) end();
      exitStatus_ = -1;
    }
  }
}

/// If other code has already waited for the process, there is no status, and its id may have been reused.
bool ChildProcess::hasEnded(int options) {
  int status = 0;
  pid_t waited = 0;
  do {
    waited = ::waitpid(process_, &status, options);
  } while (waited < 0 && errno == EINTR);
  if (waited == 0) return false;
  exitStatus_ = waited == process_ && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  process_ = -1;
  return true;
}

void ChildProcess::end() {
  if (hasEnded(WNOHANG)) return;
  ::kill(process_, SIGKILL);
  hasEnded(0);
}

}  // namespace quillmoor
