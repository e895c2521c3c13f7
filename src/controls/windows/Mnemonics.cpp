#include "controls/Mnemonics.h"

#include <wx/anybutton.h>
#include <wx/checkbox.h>
#include <wx/radiobut.h>
#include <wx/stattext.h>
#include <wx/window.h>

#include <windows.h>

namespace quillmoor {
namespace {

bool hasMnemonic(const wxWindow& window, wxChar letter) {
  wxString text;
  const int place = wxControl::FindAccelIndex(window.GetLabel(), &text);
  return place != wxNOT_FOUND && wxToupper(text[static_cast<std::size_t>(place)]) == letter;
}

bool isButton(const wxWindow* window) {
  return dynamic_cast<const wxAnyButton*>(window) || dynamic_cast<const wxCheckBox*>(window) ||
         dynamic_cast<const wxRadioButton*>(window);
}

/// The control created after its label.
wxWindow* fieldOf(wxWindow* label) {
  wxWindow* field = label->GetNextSibling();
  while (field && !field->AcceptsFocus()) field = field->GetNextSibling();
  return field;
}

bool follow(wxWindow& window, wxChar letter) {
  for (wxWindow* const child : window.GetChildren()) {
    if (!child->IsShown() || !child->IsEnabled() || child->IsTopLevel()) continue;
    const bool label = dynamic_cast<wxStaticText*>(child) != nullptr;
    if ((label || isButton(child)) && hasMnemonic(*child, letter)) {
      wxWindow* const target = label ? fieldOf(child) : child;
      if (!target) continue;
      target->SetFocus();
      if (!label) ::SendMessageW(child->GetHWND(), BM_CLICK, 0, 0);
      return true;
    }
    if (follow(*child, letter)) return true;
  }
  return false;
}

}  // namespace

void FollowMnemonics(wxWindow& window) {
  window.Bind(wxEVT_CHAR_HOOK, [&window](wxKeyEvent& event) {
    const int key = event.GetKeyCode();
    const bool letter = event.GetModifiers() == wxMOD_ALT && key > WXK_SPACE && key < WXK_DELETE;
    if (!letter || !follow(window, static_cast<wxChar>(wxToupper(static_cast<wxChar>(key))))) event.Skip();
  });
}

}  // namespace quillmoor
