// Lines for the user from code that has nothing to show them with: something was put right, or could not be,
// and what was asked for goes on.
#pragma once

#include <functional>
#include <string>

namespace quillmoor {

using NoticeSink = std::function<void(const std::string& line)>;

/// Where the lines go from now on, without a line end, from whatever thread is at work; one at a time. An
/// empty sink is the default: standard error, with the program's name before the line.
void SetNoticeSink(NoticeSink sink);

void Notice(const std::string& line);

}  // namespace quillmoor
