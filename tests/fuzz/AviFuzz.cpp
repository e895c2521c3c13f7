// Any bytes at all are an animation or an AviError, never anything else.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "controls/AviReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    const quillmoor::AviAnimation read =
        quillmoor::ReadAvi(std::string_view(reinterpret_cast<const char*>(data), size));
    const auto pixels = static_cast<std::size_t>(read.width) * static_cast<std::size_t>(read.height);
    if (read.frames.empty() || read.frames.size() * pixels * 3 > quillmoor::kMaxAviPixelBytes) std::abort();
    for (const auto& frame : read.frames) {
      if (frame.size() != pixels * 3) std::abort();
    }
  } catch (const quillmoor::AviError&) {
  }
  return 0;
}
