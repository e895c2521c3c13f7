// Files that hold passwords, and the user's own folder for them: nobody else may read them.
//
// On Windows that needs nothing: a new file inherits the permissions of its folder. Those of a user's own
// folders keep other users out; those of a program folder are the administrator's decision.
#pragma once

#include <filesystem>
#include <string_view>

#include "platform/files/AtomicFile.h"

namespace quillmoor {

/// Replaces the file in one step. A new one gets the permissions 0600. So does one that others may read or
/// write, and a Notice reports that, or that it failed. A link stays a link. Raises std::system_error when
/// the file cannot be written; it is then unchanged.
void WritePrivateFile(const std::string& file, std::string_view bytes, AtomicFile::Survives survives);

/// Creates the folder with the permissions 0700, and missing ones above it. One that others may use gets them
/// too, with a Notice. Raises std::system_error when it cannot be created.
void MakePrivateFolder(const std::filesystem::path& folder);

}  // namespace quillmoor
