#include "platform/system/ErrorText.h"

#include "platform/system/CodePage.h"

namespace quillmoor {

std::string ErrorText(const std::error_code& error) {
  return FromAnsi(error.message());
}

}  // namespace quillmoor
