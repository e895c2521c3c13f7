// What servers say about a listing in words of their own, which no reply code tells.
#pragma once

#include <string>
#include <string_view>

#include "platform/ftp/FtpClient.h"

namespace quillmoor {

/// The line, without its code, in which the reply to LIST says that the listing does not hold all there is
/// ("Output truncated to 2000 matches"); "" where it says nothing of the kind.
std::string listingCut(std::string_view replyText);

/// Whether a server refuses to list a folder only because nothing is in it ("550 No files found"). A refusal
/// that says more ("Permission denied: no files visible") is none of an empty folder; a path or pattern may
/// be named.
bool saysFolderIsEmpty(const FtpReply& reply);

/// The same of a text alone, such as a listing that says it in place of listing nothing.
bool saysNoFiles(std::string_view text);

}  // namespace quillmoor
