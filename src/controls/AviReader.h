// Reads small animations from AVI files (a RIFF container), in the formats that common animation controls
// play.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace quillmoor {

/// The message says what is wrong and at which byte of the file.
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
inline constexpr std::size_t kMaxAviPixelBytes = std::size_t{64} << 20;  // all frames together

/// Decodes the first video stream: uncompressed at 8 or 24 bits a pixel, or RLE8 (BI_RGB and BI_RLE8 of
/// BITMAPINFOHEADER, rows from the bottom). Skips sound and index; an empty frame repeats the previous one.
/// Raises AviError for other formats, for damaged files, and when a bound above is exceeded.
AviAnimation ReadAvi(std::string_view file);

/// Reads a file. Errors name the file; one that cannot be opened or read raises AviError, too.
AviAnimation LoadAvi(const std::string& path);

}  // namespace quillmoor
