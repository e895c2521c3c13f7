// Reports a listing in an unknown format to the user.
#pragma once

#include <string>

#include "profiles/UserPrompts.h"

namespace quillmoor {

/// Shows a message box with the listing, or with its beginning if it is long.
void ReportUnparsedListing(const std::string& listingText, UserPrompts& prompts);

}  // namespace quillmoor
