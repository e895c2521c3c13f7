// Files that hold passwords, and the user's own folder for them: nobody else may read them.
//
// On Windows nothing is to be done for that: a new file has the permissions that its folder hands down. Those
// of a user's own folders keep other users out; those of a program folder are the administrator's decision.
#pragma once

#include <filesystem>
#include <string_view>

#include "platform/files/WholeFile.h"

namespace quillmoor {

/// Replaces the file in one step. A new one gets the permissions 0600. One that others may read, or write, is
/// set to them, and a Notice says so, or that it could not be done. A link stays a link. Raises
/// std::system_error, with the file as it was, when it cannot be written.
void WritePrivateFile(const std::filesystem::path& file, std::string_view bytes,
                      WholeFile::Survives survives);

/// Makes the folder with the permissions 0700, and those above it that are missing. One that is there and
/// others may use is set to them, with a Notice. Raises std::system_error when it cannot be made.
void MakePrivateFolder(const std::filesystem::path& folder);

}  // namespace quillmoor
