// Notices to the user from code without an output of its own: something was corrected, or could not be, and
// the operation continues.
#pragma once

#include <functional>
#include <string>

namespace quillmoor {

using NoticeSink = std::function<void(const std::string& line)>;

/// Sets where notices go from now on. Lines come without a line end, from any thread, one at a time. An empty
/// sink restores the default: standard error, with the program's name before the line.
void SetNoticeSink(NoticeSink sink);

void Notice(const std::string& line);

}  // namespace quillmoor
