// A display that remembers what a run has shown.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "engine/RunDisplay.h"

namespace quillmoor {

class RecordingDisplay final : public RunDisplay {
 public:
  struct Line {
    std::string text;
    Colour colour;
  };
  std::vector<Line> lines;
  std::vector<Colour> colours;  // as they were set
  std::vector<std::size_t> trims;
  std::vector<std::vector<std::string>> rows;
  std::vector<std::vector<Colour>> rowColours;
  std::vector<int> progress;
  std::vector<std::string> rates;
  std::vector<std::string> sizes;
  std::vector<bool> hourglass;
  std::vector<bool> running;

  std::string log() const {
    std::string all;
    for (const Line& line : lines) all += line.text;
    return all;
  }
  bool logged(const std::string& text) const { return log().find(text) != std::string::npos; }
  int count(const std::string& text) const {
    int found = 0;
    const std::string all = log();
    for (auto at = all.find(text); at != std::string::npos; at = all.find(text, at + text.size())) ++found;
    return found;
  }
  std::string item(std::size_t row, ReportColumn column) const {
    return rows.at(row).at(static_cast<std::size_t>(column));
  }

  std::size_t logLength() const override { return log().size(); }
  void trimLog(std::size_t characters) override { trims.push_back(characters); }
  void setLogColour(Colour colour) override {
    colours.push_back(colour);
    colour_ = colour;
  }
  void insertLogText(std::string_view text) override { lines.push_back({std::string(text), colour_}); }
  void showProgress(int percent) override { progress.push_back(percent); }
  void showRate(const std::string& text) override { rates.push_back(text); }
  void showFileSize(const std::string& text) override { sizes.push_back(text); }
  std::size_t addReportRow() override {
    rows.emplace_back(kReportColumns);
    rowColours.emplace_back(kReportColumns);
    return rows.size() - 1;
  }
  void setReportItem(std::size_t row, ReportColumn column, const std::string& text) override {
    rows.at(row).at(static_cast<std::size_t>(column)) = text;
  }
  void setReportColour(std::size_t row, ReportColumn column, Colour colour) override {
    rowColours.at(row).at(static_cast<std::size_t>(column)) = colour;
  }
  void repopulateReport() override {}
  void showBusyCursor(bool busy) override { hourglass.push_back(busy); }
  void showRunning(bool now) override { running.push_back(now); }

 private:
  Colour colour_;
};

}  // namespace quillmoor
