// A document in proper UTF-8, or an RtfError.
#include "Fuzz.h"
#include "base/Utf8.h"
#include "controls/RtfReader.h"

void quillmoor::tryInput(std::string_view input) {
  try {
    const RtfDocument read = ReadRtf(input);
    for (const RtfParagraph& paragraph : read.paragraphs) {
      for (const RtfRun& run : paragraph.runs) {
        std::string_view text = run.text;
        require(!text.empty() && run.format.halfPoints >= 2 && run.format.halfPoints <= 400);
        for (std::size_t length = 0; !text.empty(); text.remove_prefix(length))
          require((length = DecodeUtf8(text).length) != 0);
      }
    }
  } catch (const RtfError&) {
  }
}
