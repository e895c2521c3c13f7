// What the user is told of a listing that nobody can read.
#pragma once

#include <string>

#include "profiles/UserPrompts.h"

namespace quillmoor {

/// Shows a message box with the listing in it; of one that no box has room for, the beginning.
void ReportUnparsedListing(const std::string& listingText, UserPrompts& prompts);

}  // namespace quillmoor
