// How local paths are written on this platform.
#pragma once

namespace quillmoor {

/// "\" on Windows, "/" elsewhere.
extern const char kLocalSeparator;

/// Rules for what may be a file's name.
enum class LocalNameRules { posix, windows };
extern const LocalNameRules kLocalNameRules;

}  // namespace quillmoor
