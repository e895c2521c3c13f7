// Colours of the log, and the line of dashes around a profile's heading.
#pragma once

#include <string>

#include "engine/RunDisplay.h"

namespace quillmoor {

namespace log_colour {
inline constexpr Colour kFrameRule{153, 0, 153};
inline constexpr Colour kFrameTitle{255, 0, 204};
inline constexpr Colour kWaiting{255, 0, 255};  // also the start of a profile and the end of a hang-up
inline constexpr Colour kError{255, 0, 0};
inline constexpr Colour kEndOfProfile{0, 102, 0};
inline constexpr Colour kLogout{204, 0, 204};
inline constexpr Colour kAfterLogout{0, 51, 255};
inline constexpr Colour kDialling{0, 0, 255};
inline constexpr Colour kEndOfRun{0, 0, 255};
inline constexpr Colour kConnection{0, 0, 255};
inline constexpr Colour kReply{0, 102, 0};
inline constexpr Colour kFailedReply{102, 0, 102};
inline constexpr Colour kDirectory{153, 0, 153};
inline constexpr Colour kRetrieving{0, 0, 255};  // also the date line of the comparison
inline constexpr Colour kRetrievedPath{0, 51, 204};
inline constexpr Colour kUpToDate{0, 255, 0};
inline constexpr Colour kAction{0, 0, 255};
inline constexpr Colour kArchive{255, 0, 255};
inline constexpr Colour kArchivePath{0, 0, 255};
inline constexpr Colour kArchiveDone{51, 102, 102};
inline constexpr Colour kCopy{0, 0, 255};
}  // namespace log_colour

/// A whole line of dashes.
inline const std::string kLogRule = std::string(200, '-') + "\r\n";

}  // namespace quillmoor
