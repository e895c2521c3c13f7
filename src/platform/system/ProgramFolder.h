// Where this program lies and what it is called.
#pragma once

#include <string>

namespace quillmoor {

/// Folder of the executable, with a separator at its end.
std::string ProgramFolder();

/// The executable's file name without ".exe".
std::string ProgramName();

/// Folder and file name of the executable.
std::string ProgramPath();

}  // namespace quillmoor
