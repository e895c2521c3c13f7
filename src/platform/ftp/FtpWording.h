// Recognises what servers say about a listing in free text, without a reply code of its own.
#pragma once

#include <string>
#include <string_view>

#include "platform/ftp/FtpClient.h"

namespace quillmoor {

/// Returns the line, without its code, in which the reply to LIST says that the listing is incomplete
/// ("Output truncated to 2000 matches"); "" when there is none.
std::string listingCut(std::string_view replyText);

/// Whether a server refused to list a folder only because it is empty ("550 No files found"). A path or
/// pattern may be named; a refusal that says more ("Permission denied: no files visible") does not count.
bool saysFolderIsEmpty(const FtpReply& reply);

/// The same for text alone, such as a listing that says so instead of being empty.
bool saysNoFiles(std::string_view text);

}  // namespace quillmoor
