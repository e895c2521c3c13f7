#include "platform/LocalPath.h"

namespace quillmoor {

const char kLocalSeparator = '/';
const LocalNameRules kLocalNameRules = LocalNameRules::posix;

}  // namespace quillmoor
