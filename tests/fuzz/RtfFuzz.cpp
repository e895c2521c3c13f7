// Any bytes at all are a document in proper UTF-8 or an RtfError, never anything else.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "base/Utf8.h"
#include "controls/RtfReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    const quillmoor::RtfDocument read =
        quillmoor::ReadRtf(std::string_view(reinterpret_cast<const char*>(data), size));
    for (const quillmoor::RtfParagraph& paragraph : read.paragraphs) {
      for (const quillmoor::RtfRun& run : paragraph.runs) {
        std::string_view text = run.text;
        if (text.empty() || run.format.halfPoints < 2 || run.format.halfPoints > 400) std::abort();
        while (!text.empty()) {
          const std::size_t length = quillmoor::DecodeUtf8(text).length;
          if (length == 0) std::abort();
          text.remove_prefix(length);
        }
      }
    }
  } catch (const quillmoor::RtfError&) {
  }
  return 0;
}
