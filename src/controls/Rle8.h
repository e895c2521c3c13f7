// Run-length encoded pictures with 8 bits per pixel (BI_RLE8 of BITMAPINFOHEADER).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace quillmoor {

struct Rle8Result {
  std::size_t at = 0;           // byte offset in the code at which reading ended
  const char* fault = nullptr;  // what is wrong there; null when all was read
};

/// Draws over `pixels`: `width` times `height` palette indices, rows from the top. Pixels that the code skips
/// keep their value. The code may lack its end marker.
Rle8Result DecodeRle8(std::string_view code, int width, int height, std::vector<std::uint8_t>& pixels);

}  // namespace quillmoor
