#include "platform/system/ProgramArguments.h"

namespace quillmoor {

std::vector<std::string> ProgramArguments(int argc, char** argv) {
  return {argv + (argc > 0 ? 1 : 0), argv + argc};
}

}  // namespace quillmoor
