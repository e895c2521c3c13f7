#include "platform/Terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <cstring>

namespace quillmoor {
namespace {

volatile std::sig_atomic_t stopCount = 0;

extern "C" void countStop(int) {
  stopCount = stopCount + 1;
  if (stopCount >= 2) ::_exit(130);
}

}  // namespace

bool prepareTerminal() {
  const char* const kind = std::getenv("TERM");
  return ::isatty(STDOUT_FILENO) == 1 && kind && std::strcmp(kind, "dumb") != 0;
}

int terminalWidth() {
  winsize size{};
  if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return 80;
  return size.ws_col;
}

void catchStopSignals() {
  struct sigaction action {};
  action.sa_handler = countStop;
  ::sigemptyset(&action.sa_mask);
  ::sigaction(SIGINT, &action, nullptr);
  ::sigaction(SIGTERM, &action, nullptr);
  action.sa_handler = SIG_IGN;
  ::sigaction(SIGPIPE, &action, nullptr);
}

int stopSignals() {
  return stopCount;
}

}  // namespace quillmoor
