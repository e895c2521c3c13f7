#include "platform/system/ErrorText.h"

namespace quillmoor {

std::string ErrorText(const std::error_code& error) {
  return error.message();
}

}  // namespace quillmoor
