// Advice for the user about a login that the server has refused.
#pragma once

#include <string>
#include <string_view>

namespace quillmoor {

/// One sentence for the log, without a line break, when the server has too many connections or requires
/// encryption; "" for any other failure, such as a wrong password. Takes the number and the description of an
/// FtpError. `encrypted`: the profile chooses TLS.
std::string LoginAdvice(int number, std::string_view description, bool encrypted);

}  // namespace quillmoor
