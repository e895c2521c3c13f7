// A program that runs beside this one and whose output is read.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace quillmoor {

/// Started without a shell, found on the PATH, in a process group of its own (Ctrl-C is not for it), with
/// nothing to read, its messages thrown away, and texts in no language but UTF-8.
class ChildProcess {
 public:
  /// `arguments` begin with the program. Raises std::system_error when it cannot be started. A program that
  /// writes more than `mostOutput` bytes is ended.
  explicit ChildProcess(const std::vector<std::string>& arguments, std::size_t mostOutput = 1 << 20);
  /// Ends it if it still runs, and waits for that.
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  /// Reads what is there, without waiting. True when the program has ended.
  bool poll();
  /// Rests until there is something to read or the time is over.
  void rest(std::chrono::milliseconds time) const;

  /// Once it has ended: its exit status, -1 when it was ended by a signal or nobody knows.
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
