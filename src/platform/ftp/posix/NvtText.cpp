#include "platform/ftp/NvtText.h"

namespace quillmoor {

LineEnd platformLineEnd() {
  return LineEnd::lf;
}

}  // namespace quillmoor
