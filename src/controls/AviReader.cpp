#include "controls/AviReader.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "controls/BoundedFile.h"
#include "controls/Rle8.h"

namespace quillmoor {
namespace {

constexpr std::uint32_t kUncompressed = 0;  // BI_RGB
constexpr std::uint32_t kRle8 = 1;          // BI_RLE8

[[noreturn]] void fail(std::size_t at, const std::string& what) {
  throw AviError("byte " + std::to_string(at) + ": " + what);
}

/// A part of the file, with its position for error messages.
struct Bytes {
  std::string_view data;
  std::size_t start = 0;

  std::uint32_t number(std::size_t at, std::size_t length, const char* what) const {
    if (data.size() < at + length) fail(start + at, std::string("the file ends before ") + what);
    std::uint32_t value = 0;
    for (std::size_t i = length; i-- > 0;) value = value << 8 | static_cast<unsigned char>(data[at + i]);
    return value;
  }
  std::uint32_t u32(std::size_t at, const char* what) const { return number(at, 4, what); }
};

struct Chunk {
  std::string_view id;
  Bytes content;
};

/// Calls `take` for each chunk. A rest shorter than a chunk header is padding.
template <typename Take>
void eachChunk(Bytes list, Take take) {
  std::size_t at = 0;
  while (list.data.size() - at >= 8) {
    const std::string_view id = list.data.substr(at, 4);
    const std::size_t size = list.u32(at + 4, "a chunk's size");
    const std::size_t room = list.data.size() - at - 8;
    if (size > room) {
      fail(list.start + at,
           "a chunk of " + std::to_string(size) + " bytes where " + std::to_string(room) + " are left");
    }
    take(Chunk{id, {list.data.substr(at + 8, size), list.start + at + 8}});
    at += 8 + std::min(size + size % 2, room);
  }
}

/// The content of a list chunk of the given type; nothing for any other chunk.
std::optional<Bytes> listOf(const Chunk& chunk, std::string_view type) {
  if (chunk.id != "LIST" || chunk.content.data.substr(0, 4) != type) return std::nullopt;
  return Bytes{chunk.content.data.substr(4), chunk.content.start + 4};
}

class Decoder {
 public:
  void readHeaders(Bytes list) {
    int stream = 0;
    eachChunk(list, [&](const Chunk& chunk) {
      if (chunk.id == "avih" && animation_.perFrame.count() == 0)
        animation_.perFrame = std::chrono::microseconds(chunk.content.u32(0, "the main header"));
      if (const auto header = listOf(chunk, "strl")) {
        if (!video_) readStream(*header, stream);
        ++stream;
      }
    });
  }

  void readFrames(Bytes list) {
    if (!video_) fail(list.start, "frames without the header of a video stream before them");
    eachChunk(list, [&](const Chunk& chunk) {
      if (const auto group = listOf(chunk, "rec ")) {
        eachChunk(*group, [&](const Chunk& part) { readFrame(part); });
      } else {
        readFrame(chunk);
      }
    });
  }

  AviAnimation finish(std::size_t end) {
    if (!video_) fail(end, "no video stream");
    if (animation_.frames.empty()) fail(end, "no frame");
    using std::chrono::microseconds;
    if (animation_.perFrame.count() == 0) animation_.perFrame = microseconds(100'000);
    animation_.perFrame = std::clamp(animation_.perFrame, microseconds(10'000), microseconds(10'000'000));
    return std::move(animation_);
  }

 private:
  void readStream(Bytes list, int number) {
    bool video = false;
    eachChunk(list, [&](const Chunk& chunk) {
      if (chunk.id == "strh") {
        video = chunk.content.data.substr(0, 4) == "vids";
        if (!video) return;
        const std::uint64_t scale = chunk.content.u32(20, "the stream's frame rate");
        const std::uint64_t rate = chunk.content.u32(24, "the stream's frame rate");
        if (scale != 0 && rate != 0) {
          const std::uint64_t wanted = scale * 1'000'000 / rate;
          animation_.perFrame = std::chrono::microseconds(std::clamp<std::uint64_t>(wanted, 1, 10'000'000));
        }
      } else if (chunk.id == "strf" && video && !video_) {
        readFormat(chunk.content);
        const std::string digits{static_cast<char>('0' + number / 10 % 10),
                                 static_cast<char>('0' + number % 10)};
        video_ = digits;
      }
    });
  }

  /// Reads BITMAPINFOHEADER and the palette after it.
  void readFormat(Bytes format) {
    const std::uint32_t headerSize = format.u32(0, "the picture's header");
    const std::uint32_t width = format.u32(4, "the picture's width");
    const std::uint32_t height = format.u32(8, "the picture's height");
    bits_ = format.number(14, 2, "the picture's bits a pixel");
    compression_ = format.u32(16, "the picture's compression");
    const std::uint32_t used = format.u32(32, "the size of the palette");
    if (headerSize < 40 || headerSize > format.data.size())
      fail(format.start, "a picture header of the wrong size");
    // A negative height (rows from the top) exceeds the limit as an unsigned number.
    if (width - 1 >= kMaxAviSide || height - 1 >= kMaxAviSide) {
      fail(format.start + 4, "a picture whose sides are not 1 to " + std::to_string(kMaxAviSide) + " pixels");
    }
    if (!(compression_ == kUncompressed && (bits_ == 8 || bits_ == 24)) &&
        !(compression_ == kRle8 && bits_ == 8)) {
      fail(format.start + 14, "pictures of " + std::to_string(bits_) + " bits a pixel in compression " +
                                  std::to_string(compression_) + "; only uncompressed ones of 8 or 24 bits " +
                                  "and RLE8 are supported");
    }
    animation_.width = static_cast<int>(width);
    animation_.height = static_cast<int>(height);
    if (bits_ == 8)
      readPalette({format.data.substr(headerSize), format.start + headerSize}, used == 0 ? 256 : used);
    indices_.assign(std::size_t{width} * height, 0);
  }

  void readPalette(Bytes entries, std::uint32_t count) {
    if (count > palette_.size()) fail(entries.start, "a palette of " + std::to_string(count) + " colours");
    for (std::size_t i = 0; i < count; ++i) {
      const std::uint32_t entry = entries.u32(4 * i, "the end of the palette");  // blue, green, red, unused
      palette_[i] = {static_cast<std::uint8_t>(entry >> 16), static_cast<std::uint8_t>(entry >> 8),
                     static_cast<std::uint8_t>(entry)};
    }
  }

  void readFrame(const Chunk& chunk) {
    if (chunk.id.substr(0, 2) != *video_) return;
    const std::string_view kind = chunk.id.substr(2);
    if (kind == "pc") fail(chunk.content.start, "a change of the palette, which is not supported");
    if (kind != "db" && kind != "dc") return;
    const std::size_t bytes = indices_.size() * 3;
    if (animation_.frames.size() >= kMaxAviFrames ||
        (animation_.frames.size() + 1) * bytes > kMaxAviPixelBytes)
      fail(chunk.content.start, "too many frames");
    if (!chunk.content.data.empty()) {
      if (bits_ == 24) {
        animation_.frames.push_back(trueColour(chunk.content));
        return;
      }
      if (compression_ == kRle8) {
        const Rle8Result result =
            DecodeRle8(chunk.content.data, animation_.width, animation_.height, indices_);
        if (result.fault != nullptr) fail(chunk.content.start + result.at, result.fault);
      } else {
        takeIndices(chunk.content);
      }
    } else if (!animation_.frames.empty()) {
      animation_.frames.push_back(animation_.frames.back());
      return;
    }
    animation_.frames.push_back(coloured());
  }

  /// The size of a stored row in bytes: rows are padded to 32 bits.
  std::size_t storedRow(Bytes frame) const {
    const std::size_t stride = (static_cast<std::size_t>(animation_.width) * bits_ / 8 + 3) / 4 * 4;
    const std::size_t needed = stride * static_cast<std::size_t>(animation_.height);
    if (frame.data.size() < needed) {
      fail(frame.start,
           "a frame of " + std::to_string(frame.data.size()) + " bytes instead of " + std::to_string(needed));
    }
    return stride;
  }

  void takeIndices(Bytes frame) {
    const auto width = static_cast<std::size_t>(animation_.width);
    const auto height = static_cast<std::size_t>(animation_.height);
    const std::size_t stride = storedRow(frame);
    for (std::size_t row = 0; row < height; ++row) {
      std::copy_n(frame.data.begin() + static_cast<std::ptrdiff_t>((height - 1 - row) * stride), width,
                  indices_.begin() + static_cast<std::ptrdiff_t>(row * width));
    }
  }

  std::vector<std::uint8_t> trueColour(Bytes frame) const {
    const auto width = static_cast<std::size_t>(animation_.width);
    const auto height = static_cast<std::size_t>(animation_.height);
    const std::size_t stride = storedRow(frame);
    std::vector<std::uint8_t> pixels;
    pixels.reserve(indices_.size() * 3);
    for (std::size_t row = height; row-- > 0;) {
      for (std::size_t x = 0; x < width; ++x) {
        for (std::size_t part = 3; part-- > 0;)  // stored as blue, green, red
          pixels.push_back(static_cast<std::uint8_t>(frame.data[row * stride + x * 3 + part]));
      }
    }
    return pixels;
  }

  std::vector<std::uint8_t> coloured() const {
    std::vector<std::uint8_t> pixels;
    pixels.reserve(indices_.size() * 3);
    for (const std::uint8_t index : indices_)
      pixels.insert(pixels.end(), palette_[index].begin(), palette_[index].end());
    return pixels;
  }

  AviAnimation animation_;
  std::optional<std::string> video_;  // the two digits that begin the ids of the stream's chunks
  std::uint32_t bits_ = 0;
  std::uint32_t compression_ = 0;
  std::array<std::array<std::uint8_t, 3>, 256> palette_{};
  std::vector<std::uint8_t> indices_;  // the previous frame, which RLE8 frames modify; rows from the top
};

}  // namespace

AviAnimation ReadAvi(std::string_view file) {
  if (file.size() < 12 || file.substr(0, 4) != "RIFF" || file.substr(8, 4) != "AVI ")
    fail(0, "not an AVI file");
  const Bytes whole{file, 0};
  const std::size_t size = whole.u32(4, "the file's size");
  if (size < 4 || size > file.size() - 8)
    fail(4, "the file says " + std::to_string(size) + " bytes and has " + std::to_string(file.size() - 8));
  Decoder decoder;
  eachChunk({file.substr(12, size - 4), 12}, [&](const Chunk& chunk) {
    if (const auto headers = listOf(chunk, "hdrl")) decoder.readHeaders(*headers);
    if (const auto frames = listOf(chunk, "movi")) decoder.readFrames(*frames);
  });
  return decoder.finish(file.size());
}

AviAnimation LoadAvi(const std::string& path) {
  try {
    return ReadAvi(ReadBoundedFile(path, kMaxAviFileBytes));
  } catch (const std::exception& error) {
    throw AviError(path + ": " + error.what());
  }
}

}  // namespace quillmoor
