// Shows a backup run on a terminal: the log in its colours, a status line at the bottom while a file is
// fetched, and the report table at the end.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/RunDisplay.h"
#include "engine/RunResult.h"

namespace quillmoor {

/// The output of a ConsoleDisplay.
struct ConsoleScreen {
  /// Writes bytes; may buffer them.
  std::function<void(std::string_view)> write;
  /// Whether colours and the status line are shown; otherwise the log is plain text.
  bool terminal = false;
  /// The current width in columns; called only on a terminal.
  std::function<int()> width;
  /// A monotonic clock in milliseconds.
  std::function<std::int64_t()> tick;
};

class ConsoleDisplay final : public RunDisplay {
 public:
  explicit ConsoleDisplay(ConsoleScreen screen) : screen_(std::move(screen)) {}

  /// Called from the pump: updates the status line, at most ten times a second.
  void refresh();
  /// Erases the status line and resets the terminal's colour.
  void finish();
  /// The report as a table; "" when the run had no rows. Failures of a profile are listed below its row.
  std::string reportTable(const std::vector<ProfileResult>& results) const;

  // RunDisplay. A terminal scrolls by itself, so the log has no length and is never trimmed.
  std::size_t logLength() const override { return 0; }
  void trimLog(std::size_t) override {}
  void setLogColour(Colour colour) override { wanted_ = colour; }
  void insertLogText(std::string_view text) override;
  void showCurrentFile(const std::string& remoteFile) override;
  void showProgress(int percent) override { percent_ = percent; }
  void showRate(const std::string& text) override { rate_ = text; }
  void showFileSize(const std::string& text) override { size_ = text; }
  std::size_t addReportRow() override;
  void setReportItem(std::size_t row, ReportColumn column, const std::string& text) override;
  void setReportColour(std::size_t, ReportColumn, Colour) override {}
  void repopulateReport() override {}
  void showBusyCursor(bool) override {}
  void showRunning(bool) override {}

 private:
  void eraseStatus();

  ConsoleScreen screen_;
  Colour wanted_;
  Colour current_ = kButtonFace;  // the status line leaves it; no log line has it
  bool atLineStart_ = true;
  bool statusShown_ = false;
  std::int64_t statusTick_ = 0;
  std::string file_, rate_, size_;
  int percent_ = 0;
  std::vector<std::array<std::string, kReportColumns>> rows_;
};

/// Makes text safe for a terminal: CR LF becomes LF, any other control character "?" (see PrintableText).
std::string terminalText(std::string_view text);

}  // namespace quillmoor
