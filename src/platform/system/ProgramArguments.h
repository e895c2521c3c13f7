// The arguments a program was started with.
#pragma once

#include <string>
#include <vector>

namespace quillmoor {

/// All of them behind the program's name, as UTF-8; what main was given, which on Windows has lost what the
/// code page lacks.
std::vector<std::string> ProgramArguments(int argc, char** argv);

}  // namespace quillmoor
