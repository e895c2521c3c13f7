// The path and name of this program.
#pragma once

#include <string>

namespace quillmoor {

/// Folder of the executable, with a trailing separator.
std::string ProgramFolder();

/// The executable's file name without ".exe".
std::string ProgramName();

/// Folder and file name of the executable.
std::string ProgramPath();

}  // namespace quillmoor
