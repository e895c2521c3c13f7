// The help pane: shows the guide from the program's folder.
#pragma once

#include <wx/panel.h>

#include "controls/RichTextView.h"

namespace quillmoor {

class frmHelp : public wxPanel {
 public:
  /// Shows "Help.rtf" of the program's folder; a missing file leaves the pane empty.
  explicit frmHelp(wxWindow* parent);

  RichTextView* rtfHelp;
};

}  // namespace quillmoor
