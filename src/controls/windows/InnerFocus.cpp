#include "controls/InnerFocus.h"

namespace quillmoor {

/// The toolkit tells of every focus.
void TellInnerFocus(wxWindow&) {}

}  // namespace quillmoor
