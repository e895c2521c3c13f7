#include "controls/InnerFocus.h"

namespace quillmoor {

/// The toolkit reports every focus itself.
void ReportInnerFocus(wxWindow&) {}

}  // namespace quillmoor
