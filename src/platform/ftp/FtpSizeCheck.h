// Is a file that has come all of what the server has? Asked by SIZE (RFC 3659 §4) where sizes differ.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "platform/ftp/FtpControl.h"

namespace quillmoor {

/// A transfer that the server has confirmed, in the type that is still in force.
struct FtpReceivedFile {
  std::string remotePath;
  std::int64_t count = 0;                 // bytes that came over the data connection
  std::optional<std::int64_t> listed;     // the size in the folder's listing
  std::optional<std::int64_t> announced;  // the size in the 150 reply
};

/// Raises FtpError `incomplete` for a file that may miss something. Sends nothing where the sizes raise no
/// doubt: in binary transfers a listed size that is not the count or an announced one above it, in text
/// transfers, which line ends make longer, a listed size above it. In doubt the server's answer to SIZE
/// decides, and without one the file counts as incomplete. Where no size is known SIZE is asked as well, but
/// a server that does not answer it is believed. The type is the same afterwards, or the control
/// connection is closed; so it is where it fails or is aborted.
void RequireWholeFile(FtpControl& control, const FtpReceivedFile& file, std::chrono::milliseconds timeout);

}  // namespace quillmoor
