#include "controls/Mnemonics.h"

namespace quillmoor {

/// The toolkit searches the whole window.
void FollowMnemonics(wxWindow&) {}

}  // namespace quillmoor
