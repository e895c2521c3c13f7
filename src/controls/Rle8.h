// Run-length coded pictures of 8 bits a pixel (BI_RLE8 of BITMAPINFOHEADER).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace quillmoor {

struct Rle8Result {
  std::size_t at = 0;           // byte of the code at which reading ended
  const char* fault = nullptr;  // what is wrong there; none: all was understood
};

/// Draws over `pixels`, `width` times `height` palette indices with rows from the top; what the code leaves
/// out keeps its value. The code may end without its end mark.
Rle8Result DecodeRle8(std::string_view code, int width, int height, std::vector<std::uint8_t>& pixels);

}  // namespace quillmoor
