// AVI files for tests, put together piece by piece so that each piece can be wrong.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace quillmoor::testing {

inline std::string le(std::uint32_t value, int bytes = 4) {
  std::string text;
  for (int i = 0; i < bytes; ++i) text += static_cast<char>(value >> (8 * i));
  return text;
}

inline std::string chunk(const std::string& id, const std::string& content) {
  return id + le(static_cast<std::uint32_t>(content.size())) + content +
         std::string(content.size() % 2, '\0');
}

inline std::string list(const std::string& type, const std::string& content) {
  return chunk("LIST", type + content);
}

struct AviFile {
  std::uint32_t width = 3;
  std::uint32_t height = 2;
  std::uint32_t bits = 8;
  std::uint32_t compression = 0;
  std::uint32_t microseconds = 50'000;  // of the main header
  std::uint32_t scale = 0;              // of the stream; rate / scale frames a second
  std::uint32_t rate = 0;
  std::uint32_t usedColours = 3;
  std::string palette =
      std::string("\x00\x00\xFF\x00\x00\xFF\x00\x00\xFF\x00\x00\x00", 12);  // red, green, blue
  std::string streamsBefore;                                                // "strl" lists
  std::string videoNumber = "00";
  std::vector<std::pair<std::string, std::string>>
      frames;  // chunk's kind ("dc" where there is none), content

  std::string format() const {
    return le(40) + le(width) + le(height) + le(1, 2) + le(bits, 2) + le(compression) + le(0) + le(0) +
           le(0) + le(usedColours) + le(0) + palette;
  }
  std::string headers() const {
    const std::string stream = "vids" + std::string(16, '\0') + le(scale) + le(rate) + std::string(28, '\0');
    return list("hdrl", chunk("avih", le(microseconds) + std::string(52, '\0')) + streamsBefore +
                            list("strl", chunk("strh", stream) + chunk("strf", format())));
  }
  std::string movie() const {
    std::string content;
    for (const auto& [kind, data] : frames)
      content += chunk(videoNumber + (kind.empty() ? "dc" : kind), data);
    return content;
  }
  std::string bytes() const { return chunk("RIFF", "AVI " + headers() + list("movi", movie())); }
};

}  // namespace quillmoor::testing
