#include "platform/ErrorText.h"

#include "platform/CodePage.h"

namespace quillmoor {

std::string ErrorText(const std::error_code& error) {
  return FromAnsi(error.message());
}

}  // namespace quillmoor
