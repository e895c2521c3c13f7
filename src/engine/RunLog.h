// The run log: the one way in which the engine says something.
#pragma once

#include <cstddef>
#include <string_view>

#include "engine/RunDisplay.h"

namespace quillmoor {

class RunLog {
 public:
  static constexpr std::size_t kLongestLog = 200'000;  // characters, before the start is dropped
  static constexpr std::size_t kTrimmed = 20'000;

  /// `display` must outlive this.
  explicit RunLog(RunDisplay& display) : display_(display) {}

  /// Appends text, which holds its own line breaks (CR LF). `emphasis` sets the system's button face colour
  /// first; the text's colour follows at once, so that emphasised lines look like others. It is kept so.
  void AppendLog(std::string_view text, Colour colour, bool emphasis);

  /// Appends since the counter was last zeroed.
  double lineCount() const { return lineCount_; }
  void zeroLineCount() { lineCount_ = 0; }

 private:
  RunDisplay& display_;
  double lineCount_ = 0;
};

}  // namespace quillmoor
