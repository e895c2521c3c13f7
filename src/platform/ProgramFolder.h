// Where this program lies and what it is called.
#pragma once

#include <string>

namespace quillmoor {

/// Folder of the executable, with a separator at its end.
std::string ProgramFolder();

/// The executable's file name without ".exe".
std::string ProgramName();

}  // namespace quillmoor
