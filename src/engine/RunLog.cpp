#include "engine/RunLog.h"

namespace quillmoor {

void RunLog::AppendLog(std::string_view text, Colour colour, bool emphasis) {
  lineCount_ += 1;
  if (display_.logLength() > kLongestLog) display_.trimLog(kTrimmed);
  if (emphasis) display_.setLogColour(kButtonFace);
  display_.setLogColour(colour);
  display_.insertLogText(text);
}

}  // namespace quillmoor
