// The text of the run log as the backup window holds it: coloured lines, cheap to append to and to trim.
#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "engine/RunDisplay.h"

namespace quillmoor {

/// From `begin`, a byte of the line's text, on.
struct LogRun {
  std::size_t begin = 0;
  Colour colour;
};

struct LogLine {
  std::string text;  // valid UTF-8 without control characters
  std::vector<LogRun> runs;
  std::size_t characters = 0;  // as they were appended, the line break included
};

/// Lengths are counted in characters of what was appended; a line break (CR LF) has two.
class LogText {
 public:
  std::size_t length() const { return length_; }

  void setColour(Colour colour) { colour_ = colour; }

  /// A line break ends the line; other control characters become "?". Bytes that are no UTF-8, as in the
  /// names of old servers, are read as ANSI.
  void append(std::string_view text);

  /// Drops characters from the start.
  void trim(std::size_t characters);

  /// The last line is the one that the next append goes on with; it may be empty.
  std::size_t lineCount() const { return lines_.size(); }
  const LogLine& line(std::size_t index) const { return lines_[index]; }

  /// Lines that `trim` has dropped so far: number of the first line shown, counted from the first appended.
  std::size_t firstLine() const { return dropped_; }

 private:
  void appendToLine(std::string_view text);

  std::deque<LogLine> lines_{1};
  Colour colour_;
  std::size_t length_ = 0;
  std::size_t dropped_ = 0;
};

}  // namespace quillmoor
