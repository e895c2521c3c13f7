#include "shell/frmHelp.h"

#include <wx/sizer.h>

#include "platform/system/ProgramFolder.h"

namespace quillmoor {

frmHelp::frmHelp(wxWindow* parent)
    : wxPanel(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxTAB_TRAVERSAL, "frmHelp") {
  rtfHelp = new RichTextView(this, wxID_ANY, "Help");
  rtfHelp->LoadFile(ProgramFolder() + "Help.rtf");
  auto* const all = new wxBoxSizer(wxVERTICAL);
  all->Add(rtfHelp, wxSizerFlags(1).Expand());
  SetSizer(all);
}

}  // namespace quillmoor
