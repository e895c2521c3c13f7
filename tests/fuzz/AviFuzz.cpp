// An animation: frames of the size announced, within the bound of pixels; or an AviError.
#include "Fuzz.h"
#include "controls/AviReader.h"

void quillmoor::tryInput(std::string_view input) {
  try {
    const AviAnimation read = ReadAvi(input);
    const auto pixels = static_cast<std::size_t>(read.width) * static_cast<std::size_t>(read.height);
    require(!read.frames.empty() && read.frames.size() * pixels * 3 <= kMaxAviPixelBytes);
    for (const auto& frame : read.frames) require(frame.size() == pixels * 3);
  } catch (const AviError&) {
  }
}
