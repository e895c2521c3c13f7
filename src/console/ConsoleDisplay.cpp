#include "console/ConsoleDisplay.h"

#include <algorithm>

#include "platform/system/PrintableText.h"

namespace quillmoor {
namespace {

constexpr std::int64_t kStatusIntervalMs = 100;
constexpr std::string_view kEraseLine = "\r\x1b[K";
constexpr std::string_view kOwnColour = "\x1b[0m";

bool startsCharacter(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
}

std::size_t columnsOf(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), startsCharacter));
}

/// The last `columns` characters, with "..." in front where the text was cut.
std::string tailOf(const std::string& text, std::size_t columns) {
  std::size_t have = columnsOf(text);
  if (have <= columns) return text;
  constexpr std::string_view dots = "...";
  if (columns <= dots.size()) return std::string(dots.substr(0, columns));
  std::size_t at = 0;
  for (have -= columns - dots.size(); have != 0; --have) {
    do ++at;
    while (at < text.size() && !startsCharacter(text[at]));
  }
  return std::string(dots) + text.substr(at);
}

}  // namespace

std::string terminalText(std::string_view text) {
  std::string lines(text);
  for (auto at = lines.find("\r\n"); at != std::string::npos; at = lines.find("\r\n", at)) lines.erase(at, 1);
  return PrintableText(lines, "\n");
}

void ConsoleDisplay::insertLogText(std::string_view text) {
  const std::string shown = terminalText(text);
  if (shown.empty()) return;
  if (!screen_.terminal) {
    screen_.write(shown);
    return;
  }
  eraseStatus();
  if (wanted_ != current_) {
    current_ = wanted_;
    screen_.write("\x1b[38;2;" + std::to_string(wanted_.red) + ";" + std::to_string(wanted_.green) + ";" +
                  std::to_string(wanted_.blue) + "m");
  }
  screen_.write(shown);
  atLineStart_ = shown.back() == '\n';
}

void ConsoleDisplay::showCurrentFile(const std::string& remoteFile) {
  file_ = terminalText(remoteFile);
  percent_ = 0;
  rate_.clear();
  if (file_.empty()) eraseStatus();
  statusTick_ = screen_.tick();  // a file that is fetched at once gets no status line
}

void ConsoleDisplay::refresh() {
  if (!screen_.terminal || file_.empty() || !atLineStart_) return;
  const std::int64_t now = screen_.tick();
  if (now - statusTick_ < kStatusIntervalMs) return;
  statusTick_ = now;

  std::string figures = " " + std::to_string(percent_) + " %";
  if (!size_.empty()) figures += " of " + size_;
  if (!rate_.empty()) figures += ", " + rate_;
  // The last column stays empty: writing into it would wrap the line on some terminals.
  const auto width = static_cast<std::size_t>(std::max(screen_.width() - 1, 20));
  const std::size_t used = std::min(columnsOf(figures), width);
  screen_.write(std::string(kEraseLine) + std::string(kOwnColour) + tailOf(file_, width - used) + figures);
  statusShown_ = true;
  current_ = kButtonFace;
}

void ConsoleDisplay::eraseStatus() {
  if (!statusShown_) return;
  screen_.write(kEraseLine);
  statusShown_ = false;
}

void ConsoleDisplay::finish() {
  eraseStatus();
  if (screen_.terminal) screen_.write(kOwnColour);
  current_ = kButtonFace;
}

std::size_t ConsoleDisplay::addReportRow() {
  rows_.emplace_back();
  return rows_.size() - 1;
}

void ConsoleDisplay::setReportItem(std::size_t row, ReportColumn column, const std::string& text) {
  rows_.at(row).at(static_cast<std::size_t>(column)) = terminalText(text);
}

std::string ConsoleDisplay::reportTable(const std::vector<ProfileResult>& results) const {
  if (rows_.empty()) return "";
  std::array<std::size_t, kReportColumns> widths{};
  for (std::size_t c = 0; c < kReportColumns; ++c) {
    widths[c] = columnsOf(kReportCaptions[c]);
    for (const auto& row : rows_) widths[c] = std::max(widths[c], columnsOf(row[c]));
  }
  std::string table;
  const auto addLine = [&](auto itemAt) {
    std::string line;
    for (std::size_t c = 0; c < kReportColumns; ++c) {
      const std::string item = itemAt(c);
      line += item + std::string(widths[c] - columnsOf(item) + 2, ' ');
    }
    line.erase(line.find_last_not_of(' ') + 1);
    table += line + "\n";
  };
  addLine([](std::size_t c) { return std::string(kReportCaptions[c]); });
  addLine([&](std::size_t c) { return std::string(widths[c], '-'); });
  for (const auto& row : rows_) {
    addLine([&](std::size_t c) { return row[c]; });
    for (const ProfileResult& result : results) {
      const bool failed = result.failed() && terminalText(result.profileId) == row[0];
      if (failed) table += "  " + terminalText(FailureSummary(result)) + "\n";
    }
  }
  return table;
}

}  // namespace quillmoor
