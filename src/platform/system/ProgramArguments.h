// The program's arguments.
#pragma once

#include <string>
#include <vector>

namespace quillmoor {

/// The arguments after the program's name, as UTF-8. Pass main's own; on Windows they are replaced, as they
/// lack characters outside the code page.
std::vector<std::string> ProgramArguments(int argc, char** argv);

}  // namespace quillmoor
