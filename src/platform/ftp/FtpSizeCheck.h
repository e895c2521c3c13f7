// Checks that a received file is complete, by SIZE (RFC 3659 §4) where sizes differ.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "platform/ftp/FtpControl.h"

namespace quillmoor {

/// A transfer that the server has confirmed; the transfer type must not have changed since.
struct FtpReceivedFile {
  std::string remotePath;
  std::int64_t count = 0;                 // bytes received over the data connection
  std::optional<std::int64_t> listed;     // the size in the folder's listing
  std::optional<std::int64_t> announced;  // the size in the 150 reply
};

/// Raises FtpError `incomplete` for a file that may be incomplete. Sends nothing when the sizes agree. They
/// differ when, in a binary transfer, the listed size is not the count or the announced size is larger, or,
/// in an ASCII transfer, which line ends make longer, the listed size is larger. Then the reply to SIZE
/// decides; without one the file counts as incomplete. When no size is known SIZE is asked, too, but a server
/// that does not answer it is trusted. Afterwards the transfer type is unchanged, or the control connection
/// is closed, as after a failure or an abort.
void RequireWholeFile(FtpControl& control, const FtpReceivedFile& file, std::chrono::milliseconds timeout);

}  // namespace quillmoor
