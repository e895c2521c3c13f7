#include "engine/LogText.h"

#include <algorithm>

#include "engine/ShownText.h"

namespace quillmoor {
namespace {

bool continues(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

}  // namespace

void LogText::append(std::string_view text) {
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    if (end == std::string_view::npos) return appendToLine(text);
    const std::size_t breakAt = end > 0 && text[end - 1] == '\r' ? end - 1 : end;
    appendToLine(text.substr(0, breakAt));
    lines_.back().characters += end + 1 - breakAt;
    length_ += end + 1 - breakAt;
    lines_.emplace_back();
    text.remove_prefix(end + 1);
  }
}

void LogText::appendToLine(std::string_view text) {
  if (text.empty()) return;
  LogLine& line = lines_.back();
  if (line.runs.empty() || line.runs.back().colour != colour_) {
    line.runs.push_back({line.text.size(), colour_});
  }
  const std::size_t characters = AppendShown(line.text, text);
  line.characters += characters;
  length_ += characters;
}

void LogText::trim(std::size_t characters) {
  characters = std::min(characters, length_);
  length_ -= characters;
  while (lines_.size() > 1 && characters >= lines_.front().characters) {
    characters -= lines_.front().characters;
    lines_.pop_front();
    ++dropped_;
  }
  if (characters == 0) return;
  LogLine& line = lines_.front();
  line.characters -= characters;
  std::size_t bytes = 0;
  for (; characters != 0 && bytes < line.text.size(); --characters) {
    do ++bytes;
    while (bytes < line.text.size() && continues(line.text[bytes]));
  }
  line.text.erase(0, bytes);
  // The run that contains the cut now begins at it.
  const auto later =
      std::find_if(line.runs.begin(), line.runs.end(), [&](const LogRun& run) { return run.begin > bytes; });
  if (later != line.runs.begin()) line.runs.erase(line.runs.begin(), later - 1);
  for (LogRun& run : line.runs) run.begin -= std::min(run.begin, bytes);
}

}  // namespace quillmoor
