// The run log: the engine writes to it through AppendLog only.
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

  /// Appends text, which contains its own line breaks (CR LF). `emphasis` sets the button face colour first,
  /// which `colour` replaces at once. Deliberate: emphasised lines look like any other.
  void AppendLog(std::string_view text, Colour colour, bool emphasis);

  // Kept for each profile and read by nobody: the log is trimmed by its length.
  /// Number of appends since `zeroLineCount`.
  double lineCount() const { return lineCount_; }
  void zeroLineCount() { lineCount_ = 0; }

 private:
  RunDisplay& display_;
  double lineCount_ = 0;
};

}  // namespace quillmoor
