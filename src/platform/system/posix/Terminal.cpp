#include "platform/system/Terminal.h"

#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>

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

bool inputIsTerminal() {
  return ::isatty(STDIN_FILENO) == 1;
}

bool terminalClosesAtEnd() {
  return false;
}

std::string ReadLine() {
  constexpr std::size_t kLongest = 1000;
  std::string line;
  int c = 0;
  while ((c = std::getchar()) != EOF && c != '\n') {
    if (line.size() == kLongest) throw std::runtime_error("the line on standard input is too long");
    line += static_cast<char>(c);
  }
  if (c == EOF && line.empty()) throw std::runtime_error("there is no line on standard input");
  if (line.ends_with('\r')) line.pop_back();
  return line;
}

std::string ReadSecretLine() {
  struct Quiet {
    termios before{};
    bool changed = ::tcgetattr(STDIN_FILENO, &before) == 0;
    Quiet() {
      if (!changed) return;
      termios quiet = before;
      quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
      ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet);
    }
    ~Quiet() {
      if (changed) ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &before);
    }
  } const quiet;
  return ReadLine();
}

}  // namespace quillmoor
