#include "controls/Rle8.h"

#include <algorithm>

namespace quillmoor {
namespace {

// Meanings of the second byte after a first byte of 0. Any other value is a count of literal bytes.
constexpr std::size_t kEndOfRow = 0;
constexpr std::size_t kEndOfPicture = 1;
constexpr std::size_t kMove = 2;

}  // namespace

Rle8Result DecodeRle8(std::string_view code, int width, int height, std::vector<std::uint8_t>& pixels) {
  const auto columns = static_cast<std::size_t>(width);
  const auto rows = static_cast<std::size_t>(height);
  std::size_t x = 0;
  std::size_t y = 0;  // from the bottom
  std::size_t at = 0;
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(code[i]); };
  // The current position in `pixels`; valid only when a pixel fits there.
  const auto place = [&] {
    return pixels.begin() + static_cast<std::ptrdiff_t>((rows - 1 - y) * columns + x);
  };

  while (at < code.size()) {
    if (code.size() - at < 2) return {at, "half a run"};
    const std::size_t count = byte(at);
    const std::size_t second = byte(at + 1);
    if (count == 0 && second == kEndOfPicture) return {at, nullptr};
    if (count == 0 && second == kEndOfRow) {
      x = 0;
      ++y;
    } else if (count == 0 && second == kMove) {
      if (code.size() - at < 4) return {at, "half a move"};
      x += byte(at + 2);
      y += byte(at + 3);
      if (x > columns || y > rows) return {at, "a move that leaves the picture"};
      at += 2;
    } else {
      const std::size_t length = count == 0 ? second : count;
      if (y >= rows || length > columns - x) return {at, "a run that leaves the picture"};
      if (count != 0) {
        std::fill_n(place(), length, static_cast<std::uint8_t>(second));
      } else {
        if (length > code.size() - at - 2) return {at, "a run that the frame does not hold"};
        std::copy_n(code.begin() + static_cast<std::ptrdiff_t>(at + 2), length, place());
        at += std::min(length + length % 2, code.size() - at - 2);
      }
      x += length;
    }
    at += 2;
  }
  return {at, nullptr};
}

}  // namespace quillmoor
