#include "platform/NvtText.h"

namespace quillmoor {

LineEnd platformLineEnd() {
  return LineEnd::crLf;
}

}  // namespace quillmoor
