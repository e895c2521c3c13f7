// The SHA-256 fingerprint of a certificate as a user types or pastes it.
#pragma once

#include <string>
#include <string_view>

namespace quillmoor {

/// The 64 hexadecimal digits of a fingerprint, in lower case. The text may have either case, blanks around it
/// and colons or blanks between the digits. "" for any other text.
std::string PlainFingerprint(std::string_view text);

}  // namespace quillmoor
