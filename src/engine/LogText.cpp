#include "engine/LogText.h"

#include <algorithm>

#include "platform/CodePage.h"

namespace quillmoor {
namespace {

bool continues(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

/// Bytes of the UTF-8 character that `text` begins with; 0 when it begins with none.
std::size_t characterBytes(std::string_view text) {
  const auto first = static_cast<unsigned char>(text[0]);
  if (first < 0x80) return 1;
  const std::size_t bytes = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || text.size() < bytes) return 0;
  for (std::size_t i = 1; i < bytes; ++i) {
    if (!continues(text[i])) return 0;
  }
  const auto second = static_cast<unsigned char>(text[1]);
  const bool tooLong = (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
  const bool surrogate = first == 0xED && second >= 0xA0;
  const bool tooLarge = first == 0xF4 && second >= 0x90;
  return tooLong || surrogate || tooLarge ? 0 : bytes;
}

bool isControl(std::string_view character) {
  const auto first = static_cast<unsigned char>(character[0]);
  if (first < 0x20 || first == 0x7F) return true;
  return first == 0xC2 && static_cast<unsigned char>(character[1]) < 0xA0;  // C1
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
  std::size_t characters = 0;
  while (!text.empty()) {
    const std::size_t bytes = characterBytes(text);
    const std::string_view character = text.substr(0, std::max<std::size_t>(bytes, 1));
    if (bytes == 0) {
      const std::string ansi = FromAnsi(character);
      line.text += isControl(ansi) ? "?" : ansi;
    } else if (isControl(character)) {
      line.text += '?';
    } else {
      line.text += character;
    }
    ++characters;
    text.remove_prefix(character.size());
  }
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
  // The run that the cut went through begins at the cut.
  const auto later =
      std::find_if(line.runs.begin(), line.runs.end(), [&](const LogRun& run) { return run.begin > bytes; });
  if (later != line.runs.begin()) line.runs.erase(line.runs.begin(), later - 1);
  for (LogRun& run : line.runs) run.begin -= std::min(run.begin, bytes);
}

}  // namespace quillmoor
