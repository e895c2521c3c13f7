// The text of the run log in the backup window: coloured lines, cheap to append to and to trim.
#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "engine/RunDisplay.h"

namespace quillmoor {

/// A colour that applies from `begin`, a byte offset in the line's text.
struct LogRun {
  std::size_t begin = 0;
  Colour colour;
};

struct LogLine {
  std::string text;  // valid UTF-8 without control characters
  std::vector<LogRun> runs;
  std::size_t characters = 0;  // as appended, including the line break
};

/// Lengths are in characters as appended; a line break (CR LF) counts as two.
class LogText {
 public:
  std::size_t length() const { return length_; }

  void setColour(Colour colour) { colour_ = colour; }

  /// A line break ends the line; other control characters become "?". Bytes that are not UTF-8, as some
  /// servers send in names, are read as ANSI.
  void append(std::string_view text);

  /// Drops characters from the start.
  void trim(std::size_t characters);

  /// The next append continues the last line, which may be empty.
  std::size_t lineCount() const { return lines_.size(); }
  const LogLine& line(std::size_t index) const { return lines_[index]; }

  /// The number of lines that `trim` has dropped so far, which is the number of the first line still held.
  std::size_t firstLine() const { return dropped_; }

 private:
  void appendToLine(std::string_view text);

  std::deque<LogLine> lines_{1};
  Colour colour_;
  std::size_t length_ = 0;
  std::size_t dropped_ = 0;
};

}  // namespace quillmoor
