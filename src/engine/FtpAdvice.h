// What a user can do about a login that the server refuses.
#pragma once

#include <string>
#include <string_view>

namespace quillmoor {

/// One sentence for the log, without a line break, where the failure says that the server has too many
/// connections or wants them encrypted; "" of anything else, a wrong password for one. Takes the number and
/// the description of an FtpError.
std::string LoginAdvice(int number, std::string_view description);

}  // namespace quillmoor
