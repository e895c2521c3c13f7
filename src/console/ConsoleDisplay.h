// A backup run on a terminal: the log in its colours, one status line at the bottom while a file is fetched,
// and the report table at the end.
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

/// Where a ConsoleDisplay writes.
struct ConsoleScreen {
  /// Takes bytes; buffering is its own business.
  std::function<void(std::string_view)> write;
  /// Colours and the status line; without it the log is plain text.
  bool terminal = false;
  /// Columns now; asked only on a terminal.
  std::function<int()> width;
  /// Milliseconds of a clock that does not go back.
  std::function<std::int64_t()> tick;
};

class ConsoleDisplay final : public RunDisplay {
 public:
  explicit ConsoleDisplay(ConsoleScreen screen) : screen_(std::move(screen)) {}

  /// To be called from the pump: brings the status line up to date, at most ten times a second.
  void refresh();
  /// Takes the status line away and sets the terminal's own colour again.
  void finish();
  /// The report as a table; "" when the run had no row. What failed in a profile stands below its row.
  std::string reportTable(const std::vector<ProfileResult>& results) const;

  // RunDisplay. A terminal keeps what was written, so the log has no length and is never trimmed.
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
  Colour current_ = kButtonFace;  // no log line is left in it
  bool atLineStart_ = true;
  bool statusShown_ = false;
  std::int64_t statusTick_ = 0;
  std::string file_, rate_, size_;
  int percent_ = 0;
  std::vector<std::array<std::string, kReportColumns>> rows_;
};

/// Text fit for a terminal: CR LF becomes LF, any other control character "?" (see PrintableText).
std::string terminalText(std::string_view text);

}  // namespace quillmoor
