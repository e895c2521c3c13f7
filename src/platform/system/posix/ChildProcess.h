// A child process whose output is read.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace quillmoor {

/// Started without a shell, found in PATH, in its own process group (Ctrl-C does not reach it), without
/// input, with standard error discarded, and with untranslated UTF-8 output.
class ChildProcess {
 public:
  /// `arguments` begin with the program. Raises std::system_error when it cannot be started. Killed when it
  /// writes more than `mostOutput` bytes.
  explicit ChildProcess(const std::vector<std::string>& arguments, std::size_t mostOutput = 1 << 20);
  /// Kills it if it is still running, and waits for its end.
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  /// Reads the available output without waiting. True when the program has ended.
  bool poll();
  /// Waits until there is output or the time is over.
  void waitForOutput(std::chrono::milliseconds time) const;

  /// After its end: its exit status, -1 when it was ended by a signal or the status is unknown.
  int exitStatus() const { return exitStatus_; }
  const std::string& output() const { return output_; }

 private:
  void read();
  bool hasEnded(int options);
  void end();

  pid_t process_ = -1;  // -1 once it has been waited for
  int pipe_ = -1;       // -1 once it has been read to its end
  std::size_t mostOutput_;
  std::string output_;
  int exitStatus_ = -1;
};

}  // namespace quillmoor
