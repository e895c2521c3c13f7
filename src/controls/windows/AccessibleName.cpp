#include "controls/AccessibleName.h"

#include <wx/access.h>
#include <wx/stattext.h>
#include <wx/window.h>

#include <utility>

namespace quillmoor {
namespace {

/// Overrides the name, role and value; the system provides the rest.
class NamedAccessible : public wxWindowAccessible {
 public:
  NamedAccessible(wxWindow* window, const wxString& name, AccessibleRole role,
                  std::function<wxString()> value)
      : wxWindowAccessible(window), name_(name), role_(role), value_(std::move(value)) {}

  wxAccStatus GetName(int child, wxString* name) override {
    if (child != wxACC_SELF) return wxWindowAccessible::GetName(child, name);
    *name = name_;
    return wxACC_OK;
  }
  wxAccStatus GetRole(int child, wxAccRole* role) override {
    if (child != wxACC_SELF || role_ == AccessibleRole::native)
      return wxWindowAccessible::GetRole(child, role);
    *role = role_ == AccessibleRole::progressBar ? wxROLE_SYSTEM_PROGRESSBAR : wxROLE_SYSTEM_GRAPHIC;
    return wxACC_OK;
  }
  wxAccStatus GetValue(int child, wxString* value) override {
    if (child != wxACC_SELF || !value_) return wxWindowAccessible::GetValue(child, value);
    *value = value_();
    return wxACC_OK;
  }

 private:
  wxString name_;
  AccessibleRole role_;
  std::function<wxString()> value_;
};

}  // namespace

void SetAccessibleName(wxWindow& window, const wxString& name, AccessibleRole role,
                       std::function<wxString()> value) {
  window.SetAccessible(new NamedAccessible(&window, name, role, std::move(value)));
}

/// The mnemonic focuses the control created after the label (Mnemonics.h).
void SetLabelFor(wxStaticText& label, wxWindow& control) {
  SetAccessibleName(control, label.GetLabelText());
}

}  // namespace quillmoor
