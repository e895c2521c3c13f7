// Small animations out of AVI files (the RIFF container): what a common animation control plays.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace quillmoor {

/// What is wrong and at which byte of the file.
class AviError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct AviAnimation {
  int width = 0;  // pixels
  int height = 0;
  std::chrono::microseconds perFrame{0};  // 10 ms to 10 s
  std::vector<std::vector<std::uint8_t>>
      frames;  // at least one; red, green, blue; rows from the top, unpadded
};

inline constexpr int kMaxAviSide = 4096;  // pixels
inline constexpr std::size_t kMaxAviFrames = 1000;
inline constexpr std::size_t kMaxAviFileBytes = std::size_t{16} << 20;
inline constexpr std::size_t kMaxAviPixelBytes = std::size_t{64} << 20;  // of all frames together

/// Decodes the first video stream: uncompressed at 8 or 24 bits a pixel, or RLE8 (BI_RGB and BI_RLE8 of
/// BITMAPINFOHEADER, rows from the bottom). Sound and index are passed over; an empty frame repeats the one
/// before. Raises AviError for anything else, for damage, and beyond the bounds above.
AviAnimation ReadAvi(std::string_view file);

/// Reads a file. The errors name it; one that cannot be opened or read is an AviError too.
AviAnimation LoadAvi(const std::string& path);

}  // namespace quillmoor
