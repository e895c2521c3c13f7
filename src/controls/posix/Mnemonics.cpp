#include "controls/Mnemonics.h"

namespace quillmoor {

/// The toolkit looks through the whole window.
void FollowMnemonics(wxWindow&) {}

}  // namespace quillmoor
