#include "platform/system/Terminal.h"

#include <windows.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <stdexcept>
#include <string_view>

#include "platform/system/windows/WideText.h"

namespace quillmoor {
namespace {

std::atomic<int> stopCount = 0;

/// The console's original state, restored when the program ends: the console outlives it.
struct ConsoleBefore {
  HANDLE output = nullptr;  // null when standard output is not a console
  DWORD mode = 0;
  UINT codePage = 0;  // 0: no console
};
ConsoleBefore before;

void restoreConsole() {
  if (before.output) ::SetConsoleMode(before.output, before.mode);
  if (before.codePage != 0) ::SetConsoleOutputCP(before.codePage);
}

/// Called by the system on a thread of its own.
BOOL WINAPI countStop(DWORD event) {
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT && event != CTRL_CLOSE_EVENT) return FALSE;
  if (++stopCount >= 2) {
    restoreConsole();
    ::ExitProcess(130);
  }
  // When the window is closed, the system ends the process as soon as this returns, or after some seconds.
  if (event == CTRL_CLOSE_EVENT) ::Sleep(INFINITE);
  return TRUE;
}

constexpr std::size_t kLongestLine = 1000;

std::string tooLong() {
  return "the line on standard input is too long";
}

std::string readBytes() {
  std::string line;
  int c = 0;
  while ((c = std::getchar()) != EOF && c != '\n') {
    if (line.size() == kLongestLine) throw std::runtime_error(tooLong());
    line += static_cast<char>(c);
  }
  if (c == EOF && line.empty()) throw std::runtime_error("there is no line on standard input");
  return line;
}

/// Reads from the keyboard in UTF-16, so that every character can be typed.
std::string readConsole(HANDLE console) {
  wchar_t typed[kLongestLine + 2];
  DWORD length = 0;
  if (::ReadConsoleW(console, typed, static_cast<DWORD>(std::size(typed)), &length, nullptr) == FALSE ||
      length == 0) {
    throw std::runtime_error("there is no line on standard input");
  }
  std::wstring_view line(typed, length);
  if (!line.ends_with(L'\n')) throw std::runtime_error(tooLong());
  line.remove_suffix(1);
  return Narrow(line);
}

std::string readSecretly(HANDLE console, DWORD mode) {
  struct Quiet {
    HANDLE console;
    DWORD before;
    ~Quiet() {
      ::SetConsoleMode(console, before);
      std::fputs("\n", stderr);
    }
  } const quiet{console, mode};
  ::SetConsoleMode(
      console, (mode | ENABLE_LINE_INPUT | ENABLE_PROCESSED_INPUT) & ~static_cast<DWORD>(ENABLE_ECHO_INPUT));
  return readConsole(console);
}

std::string readInput(bool secret) {
  const HANDLE input = ::GetStdHandle(STD_INPUT_HANDLE);
  DWORD mode = 0;
  const bool console = ::GetConsoleMode(input, &mode) != FALSE;
  std::string line = !console ? readBytes() : secret ? readSecretly(input, mode) : readConsole(input);
  if (line.ends_with('\r')) line.pop_back();
  return line;
}

}  // namespace

bool prepareTerminal() {
  // Messages go to the console even when the log is redirected to a file.
  if (before.codePage == 0) {
    before.codePage = ::GetConsoleOutputCP();
    if (before.codePage != 0) std::atexit(restoreConsole);
  }
  ::SetConsoleOutputCP(CP_UTF8);
  const HANDLE output = ::GetStdHandle(STD_OUTPUT_HANDLE);
  DWORD mode = 0;
  if (::GetConsoleMode(output, &mode) == FALSE) return false;
  if (!before.output) {
    before.mode = mode;
    before.output = output;
  }
  return ::SetConsoleMode(output, mode | ENABLE_PROCESSED_OUTPUT | ENABLE_VIRTUAL_TERMINAL_PROCESSING) !=
         FALSE;
}

int terminalWidth() {
  CONSOLE_SCREEN_BUFFER_INFO info;
  if (::GetConsoleScreenBufferInfo(::GetStdHandle(STD_OUTPUT_HANDLE), &info) == FALSE) return 80;
  return info.srWindow.Right - info.srWindow.Left + 1;
}

void catchStopSignals() {
  ::SetConsoleCtrlHandler(countStop, TRUE);
}

int stopSignals() {
  return stopCount;
}

bool inputIsTerminal() {
  DWORD mode = 0;
  return ::GetConsoleMode(::GetStdHandle(STD_INPUT_HANDLE), &mode) != FALSE;
}

bool terminalClosesAtEnd() {
  DWORD processes[2];
  return ::GetConsoleProcessList(processes, 2) == 1;
}

std::string ReadLine() {
  return readInput(false);
}

std::string ReadSecretLine() {
  return readInput(true);
}

}  // namespace quillmoor
